// Cuts the printer stream into its items: print headers and commands. docs/printer-stream.md has
// the format. What the items mean, and whether they may follow each other, is the decoder's matter.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_ITEM_READER_H_
#define ZR7700_VIRTUAL_PRINTER_ITEM_READER_H_

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zr7700::printer {

enum class ItemKind {
  kHeader,
  kDocumentStart,
  kDocumentEnd,
  kPageStart,
  kPageEnd,
  kPageAbort,
  kPassStart,
  kRow,
  kFeed,
  kBroken,  // bytes that are no item
};

// The item's name in sentences, "page-start" say.
const char* ItemName(ItemKind kind);

struct Item {
  ItemKind kind = ItemKind::kBroken;
  uint64_t offset = 0;               // of its first byte, from the beginning of the stream
  std::span<const uint8_t> sent;     // all of its bytes, as they came
  std::span<const uint8_t> payload;  // without escapes; all 16 bytes of a print header
  // Of a broken item: what is wrong, one sentence, and where. Empty when the bytes only go on with
  // what has been told already.
  std::string fault;
  uint64_t fault_offset = 0;
};

// Used by one thread.
class ItemReader {
 public:
  // Adds the bytes that follow in the stream; they are copied.
  void Append(std::span<const uint8_t> bytes);

  // Says that no more bytes follow.
  void Finish() { finished_ = true; }

  // Takes the next item off the stream. False when it is not complete yet, or when there is none.
  // The spans are valid until the next call of Append or Next. A command of a fixed length is
  // complete with its last byte, a row with the first byte of what follows.
  bool Next(Item& item);

 private:
  bool NextHeader(Item& item);
  bool NextCommand(Item& item);
  bool NextFeed(Item& item);
  bool NextPayload(size_t payload_bytes, Item& item);
  bool Take(size_t sent_bytes, Item& item);
  bool TakeBroken(size_t sent_bytes, size_t fault_at, std::string fault, Item& item);
  bool WaitOrCut(const std::string& what, Item& item);
  size_t NextEscape(size_t from) const;

  std::vector<uint8_t> bytes_;  // what has come and is not taken yet, from at_ on
  size_t at_ = 0;               // the next item's first byte in bytes_
  uint64_t offset_ = 0;         // the stream offset of at_
  bool finished_ = false;
  bool in_junk_ = false;           // a broken item has been told and may go on
  std::vector<uint8_t> payload_;   // the last item's, without escapes
  std::span<const uint8_t> rest_;  // bytes_ from at_ on
};

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_ITEM_READER_H_
