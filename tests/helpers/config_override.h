// SPDX-License-Identifier: MIT
// Configuration items with other values for a scope.
#pragma once

#include <string>
#include <vector>

#include "DistName.h"
#include "configDB.h"
#include "threading.h"
#include "uri.h"

/// While it lives, the item `key` has other values in the calling thread's
/// configuration.  After that, the item has its former values again.
class configOverride {
 public:
  configOverride(const std::string& key, const std::vector<std::string>& values)
      : m_key(key), m_former(current(key)) {
    publish(values);
  }
  configOverride(const configOverride&) = delete;
  configOverride& operator=(const configOverride&) = delete;
  ~configOverride() { publish(m_former); }

 private:
  static std::vector<std::string> current(const std::string& key) {
    // The first read with thread data publishes the items that registered.
    ThreadData::instance(false);
    static_cast<void>(URI_SCHEME.value(false));
    return threadedConfigDB::local().find(key).all();
  }

  void publish(const std::vector<std::string>& values) const {
    {
      editableConfigDB editor;
      editor.set(m_key, values, DistName(), false);
    }
    threadedConfigDB::refresh();
  }

  std::string m_key;
  std::vector<std::string> m_former;
};
