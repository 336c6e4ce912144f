/* The test engine's script: what an entry does at its nth call.
 *
 * A text file named by ZR7700_ENGINE_SCRIPT. A line is
 *
 *   ENTRY CALL ACTION ARGUMENT
 *
 * with CALL counted from 1 for each entry, or * for every call, and ACTION one of
 *
 *   return CODE     the entry's result (decimal, may be negative; 0 makes a null handle)
 *   delay MS        sleep
 *   wait PATH       sleep until the file exists, five minutes at most
 *   emit HEX        hand these bytes to the output callback as one block
 *   emitfile PATH   hand the file's bytes to the output callback as one block
 *   copy FROM TO    copy a file, to show how things stand at that moment
 *   storm US        from now on a timer signal every so many microseconds, which interrupts whatever
 *                   system call it finds
 *
 * The actions of one call are done in the order of their lines.
 *
 * SPDX-FileCopyrightText: The rastertoZR7700 authors
 * SPDX-License-Identifier: Apache-2.0 */
#ifndef ZR7700_TESTS_ENGINE_SCRIPT_H_
#define ZR7700_TESTS_ENGINE_SCRIPT_H_

#include <stdint.h>

/* Where emitted blocks go: `block` belongs to the script and may be changed in place. */
typedef void (*BlockReceiver)(uint8_t* block, uint32_t length_bytes);

/* Does what the script says for the next call of `entry` and returns the result it names, or
 * `otherwise`. One thread at a time. */
int32_t PerformScript(const char* entry, int32_t otherwise, BlockReceiver receiver);

#endif /* ZR7700_TESTS_ENGINE_SCRIPT_H_ */
