// SPDX-License-Identifier: MIT
// A counted object that records its life, and an open handle to it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "refcount.h"
#include "section_watch.h"

/// What happened to the boxes since the last `takeHistory`.
inline std::vector<std::string> boxHistory;

inline std::vector<std::string> takeHistory() {
  std::vector<std::string> result;
  result.swap(boxHistory);
  return result;
}

class box : public counted {
 public:
  explicit box(std::string boxLabel = "box", int boxContents = 0)
      : label(std::move(boxLabel)), contents(boxContents) {}
  ~box() override { note("destroyed " + label); }

  /// The copy of a box "a" is labelled "a'".
  counted* clone() const override {
    note("cloned " + label);
    return cloneable ? new box(label + "'", contents) : nullptr;
  }
  const char* className() const override { return "box"; }

  void put(refCountStage stage) { m_stage = stage; }
  using counted::advance;
  using counted::operator++;
  using counted::operator--;

  std::string label;
  int contents;
  bool cloneable = true;

 protected:
  void prepareCanonical() override;

 private:
  static void note(const std::string& what) {
    boxHistory.push_back(what + (sectionWatch::held[CS_REFCOUNT] ? " (inside the section)" : ""));
  }
};

/// The stage, count, version and parent of an object.
inline std::string state(const counted* object) {
  if (object == nullptr) {
    return "null";
  }
  static const char* const stages[] = {"new", "private", "canonical", "obsolete"};
  const int stage = object->stage();
  std::string result = stage >= 0 && stage <= 3 ? stages[stage] : "bad stage";
  result += ", count " + std::to_string(object->count());
  result += ", version " + std::to_string(object->version());
  if (object->parent() != nullptr) {
    const box* parent = dynamic_cast<const box*>(object->parent());
    result += ", parent " + (parent != nullptr ? parent->label : std::string("of another class"));
  }
  return result;
}

inline void box::prepareCanonical() {
  note("prepared " + label + ": " + state(this));
}

/// A new box, forced into a stage.
inline box* boxIn(refCountStage stage, const char* label) {
  box* result = new box(label);
  result->put(stage);
  return result;
}

/// A handle whose protected operations are public.
class boxRef : public Treference<box> {
 public:
  using Treference<box>::Treference;
  using Treference<box>::operator=;
  using reference::advance;
  using reference::recycle;
  using reference::set;
  using reference::setVersion;

  bool commitableIn(reference& holder) const { return reference::commitable(holder); }
  bool publishIn(reference& holder, bool check) { return reference::setCanonical(holder, check); }
};
