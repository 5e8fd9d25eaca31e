// SPDX-License-Identifier: MIT
// Per-thread data: the common part of every variant of the thread-data store.

#include "threading.h"

#include <algorithm>
#include <new>
#include <utility>

#include "assertion.h"
#include "lasting.h"

namespace {

enum class lifePhase { registering, building, alive, ended };

constinit lifePhase phase = lifePhase::registering;

}  // namespace

ThreadedDatatype::ThreadedDatatype() : m_offset(Register()) {}

ThreadedDatatype::~ThreadedDatatype() {
  ThreadData::removeClient(this, m_offset);
}

int ThreadedDatatype::Register() {
  return ThreadData::registerClient(this);
}

ThreadedDataObject* ThreadedDatatype::data(bool force) const {
  if (!force && ThreadData::registering(false)) {
    return nullptr;
  }
  // A create() that asks for data must not enter the object that is being built.
  // A destructor at exit must not bring the object back.
  if (phase == lifePhase::building || phase == lifePhase::ended) {
    return nullptr;
  }
  return ThreadData::instance(false).clientObjects[m_offset];
}

constinit ThreadData* ThreadData::c_instance = nullptr;

ThreadData::ThreadData() {
  registering(true);
  clientObjects = new (std::nothrow) ThreadedDataObject* [static_cast<std::size_t>(Nclients())] {};
  ASSERT(clientObjects != NULL);
  c_instance = this;
  ThreadedDataObject** object = clientObjects;
  for (const ThreadedDatatype* const& type : registry()) {
    ThreadedDataObject* const made = type != nullptr ? type->create() : nullptr;
    *object++ = made;
  }
  phase = lifePhase::alive;
}

ThreadData::~ThreadData() {
  phase = lifePhase::ended;
  for (int i = 0; i < Nclients(); i++) {
    delete std::exchange(clientObjects[i], nullptr);
  }
  c_instance = nullptr;
  delete[] clientObjects;
}

bool ThreadData::initialised() {
  return phase == lifePhase::alive || phase == lifePhase::ended;
}

bool ThreadData::ended() {
  return phase == lifePhase::ended;
}

std::list<const ThreadedDatatype*>& ThreadData::registry() {
  static internal::lasting<std::list<const ThreadedDatatype*>> types;  // read until the very end
  return *types;
}

int ThreadData::registerClient(const ThreadedDatatype* type) {
  if (!registering(false)) {
    assertionFailed("!\"ThreadData::registerClient\"", __FILE__, __LINE__);
  }
  registry().push_back(type);
  return Nclients() - 1;
}

void ThreadData::removeClient(const ThreadedDatatype* type, int offset) {
  std::replace(registry().begin(), registry().end(), type,
               static_cast<const ThreadedDatatype*>(nullptr));
  if (c_instance != nullptr) {
    delete std::exchange(c_instance->clientObjects[offset], nullptr);
  }
}

int ThreadData::Nclients() {
  return static_cast<int>(registry().size());
}

bool ThreadData::registering(bool close) {
  if (close && phase == lifePhase::registering) {
    phase = lifePhase::building;
  }
  return phase == lifePhase::registering;
}
