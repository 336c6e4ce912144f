// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/instances.h"

#include <map>
#include <memory>
#include <mutex>
#include <new>

namespace zr7700::reference_engine {
namespace {

struct Instance {
  std::unique_ptr<PrintEngine> engine;
  bool busy = false;
};

// Guards Instances(); never held while an engine works.
std::mutex& Lock() {
  static std::mutex lock;
  return lock;
}

// Never destroyed: a host may call entries until its very end.
std::map<HPEHandle, Instance>& Instances() {
  static auto* const instances = new std::map<HPEHandle, Instance>;
  return *instances;
}

}  // namespace

HPEHandle MakeInstance(Family family) try {
  auto engine = std::make_unique<PrintEngine>(family);
  HPEHandle const handle = engine.get();
  const std::lock_guard guard(Lock());
  Instances()[handle].engine = std::move(engine);
  return handle;
} catch (const std::bad_alloc&) {
  return nullptr;
}

void DropInstance(HPEHandle handle) {
  const std::lock_guard guard(Lock());
  const auto instance = Instances().find(handle);
  if (instance != Instances().end() && !instance->second.busy) Instances().erase(instance);
}

Hold::Hold(HPEHandle handle) : handle_(handle), status_(kBadHandle) {
  const std::lock_guard guard(Lock());
  const auto instance = Instances().find(handle);
  if (instance == Instances().end()) return;
  status_ = instance->second.busy ? kReentered : kOk;
  if (status_ != kOk) return;
  instance->second.busy = true;
  engine_ = instance->second.engine.get();
}

Hold::~Hold() {
  if (status_ != kOk) return;
  const std::lock_guard guard(Lock());
  Instances().at(handle_).busy = false;
}

}  // namespace zr7700::reference_engine
