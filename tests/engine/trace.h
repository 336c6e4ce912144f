/* What the test engine's libraries write down: one line per event, in the order of events.
 *
 * The trace file is named by ZR7700_ENGINE_TRACE. Every line goes out in one write on a descriptor
 * opened for it, so that the trace is whole whatever happens to the process afterwards.
 *
 * SPDX-FileCopyrightText: The rastertoZR7700 authors
 * SPDX-License-Identifier: Apache-2.0 */
#ifndef ZR7700_TESTS_ENGINE_TRACE_H_
#define ZR7700_TESTS_ENGINE_TRACE_H_

#include <stddef.h>

/* Appends a line, formatted as printf does, without its line end. Any thread. */
void Trace(const char* format, ...) __attribute__((format(printf, 1, 2)));

/* Appends `count` bytes to the file named by the environment variable `name`; nothing when unset.
 */
void AppendToFileOf(const char* name, const void* data, size_t count);

#endif /* ZR7700_TESTS_ENGINE_TRACE_H_ */
