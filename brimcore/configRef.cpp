// SPDX-License-Identifier: MIT
#include "configRef.h"

#include "conversion.h"
#include "events.h"
#include "items.h"
#include "lasting.h"
#include "refcount.h"
#include "system.h"
#include "threading.h"

// The C library's report of a failed `assert`, in every build type.
extern "C" [[noreturn]] void __assert_fail(const char* assertion, const char* file,
                                           unsigned int line, const char* function) noexcept;

namespace {

constexpr eventAudience READERS = AUD_AUDIT | AUD_DEVEL;

void reportMissing(const std::string& name, const char* operation) {
  commonEvent(WARNING, READERS, EC_DATA_MISSING, name + "[0]", operation);
}

}  // namespace

// --- configRef -------------------------------------------------------------

const configItem& configRef::item() const {
  if (ThreadData::ended() || internal::registrationGone) {
    static const internal::lasting<configItem> missing(std::string(), std::string(), false, false);
    return *missing;
  }
  if (!ThreadData::initialised()) {
    return internal::registrationDatabase().find(m_name);
  }
  configDB& cDB = threadedConfigDB::local();
  if (cDB.null()) {
    cDB = RT_READ;
  }
  if (cDB.null()) {
    internal::registrationDatabase().finalise();
    cDB = RT_READ;
  }
  if (cDB.null()) {
    // The position is a stable diagnostic id that support relies on.
    __assert_fail("!cDB.null()", "../brimcore/configRef", 122,
                  "const configItem& configRef::item() const");
  }
  return cDB.find(m_name);
}

writeableConfigDB* configRef::registration() const {
  if (!internal::registrationGone) {
    const configDB second(internal::registrationDatabase());
    if (second.commitable()) {
      return &internal::registrationDatabase();
    }
  }
  // All classes of references report the same operation: log readers rely on it.
  commonEvent(FAILURE, READERS, EC_BAD_SEQUENCE, m_name, "configString::configString");
  return nullptr;
}

const DistName& configRef::RootDN() {
  static const DistName root(InterfaceFinder::FQDN(), DistName::DOMAIN);
  return root;
}

// --- configString ----------------------------------------------------------

configString::configString(const std::string& name, const std::string& defaultValue)
    : configRef(name) {
  writeableConfigDB* const database = registration();
  if (database == nullptr) {
    return;
  }
  if (defaultValue.empty()) {
    database->make(name, true);
  } else {
    database->set(name, defaultValue, DistName(), false, true);
  }
}

const std::string& configString::value(bool raiseError) const {
  const configItem& found = item();
  if (raiseError && found.empty()) {
    reportMissing(name(), "configString::value");
  }
  return found[0];
}

int configString::getInt() const {
  const configItem& found = item();
  if (found.empty()) {
    reportMissing(name(), "configString::getInt");
  }
  return decimal2Int(found[0]);
}

// --- configInt -------------------------------------------------------------

configInt::configInt(const std::string& name, int defaultValue)
    : configRef(name), m_default_value(defaultValue) {
  writeableConfigDB* const database = registration();
  if (database == nullptr) {
    return;
  }
  if (defaultValue < 0) {
    database->make(name, true);
  } else {
    database->set(name, int2decimal(defaultValue), DistName(), false, true);
  }
}

int configInt::value(bool raiseError) const {
  const configItem& found = item();
  if (raiseError && found.empty()) {
    reportMissing(name(), "configInt::value");
  }
  const int number = decimal2Int(found[0]);
  return number > 0 ? number : m_default_value;
}

// --- configArray -----------------------------------------------------------

configArray::configArray(const std::string& name, const char* const* defaults) : configRef(name) {
  writeableConfigDB* const database = registration();
  if (database == nullptr) {
    return;
  }
  if (defaults == nullptr) {
    database->make(name, true);
  } else {
    database->set(name, defaults, DistName(), false, true);
  }
}

const std::string& configArray::operator[](std::size_t offset) const {
  static const internal::lasting<std::string> missing;
  const std::vector<std::string>& all = values();
  if (offset < all.size()) {
    return all[offset];
  }
  commonEvent(FAILURE, READERS, EC_DATA_MISSING,
              "configItem " + name() + "[" + std::to_string(offset) + "] does not exist",
              "configArray::operator[]");
  return *missing;
}
