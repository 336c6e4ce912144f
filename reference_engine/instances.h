// The living engine instances, known by their handles.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_INSTANCES_H_
#define ZR7700_REFERENCE_ENGINE_INSTANCES_H_

#include "reference_engine/print_engine.h"
#include "zr7700/host_print_engine.h"

namespace zr7700::reference_engine {

// Makes an instance and answers its handle, null when there is no memory. Any thread.
HPEHandle MakeInstance(Family family);

// Gives an instance back; nothing happens for a handle of none, or while one of its entries runs.
void DropInstance(HPEHandle handle);

// One entry's hold on its instance: while it lives, no other entry gets the instance.
class Hold {
 public:
  explicit Hold(HPEHandle handle);
  ~Hold();
  Hold(const Hold&) = delete;
  Hold& operator=(const Hold&) = delete;

  // kOk, kBadHandle or kReentered; the engine may be used only with kOk.
  int32_t status() const { return status_; }
  PrintEngine& engine() const { return *engine_; }

 private:
  HPEHandle handle_;
  PrintEngine* engine_ = nullptr;
  int32_t status_;
};

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_INSTANCES_H_
