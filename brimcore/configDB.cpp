// SPDX-License-Identifier: MIT
#include "configDB.h"

#include <typeinfo>

#include "../utilities/empty_string.h"
#include "../utilities/startup.h"
#include "../utilities/trace_flags.h"
#include "conversion.h"
#include "events.h"
#include "language.h"
#include "lasting.h"
#include "trace.h"

// --- configItem ------------------------------------------------------------

configItem::configItem(const std::string& value, const std::string& source, bool DNvalues,
                       bool setAsDefault)
    : sourceDN(source, DistName::SIMPLE), m_isDN(DNvalues) {
  if (!value.empty()) {
    values.push_back(value);
  }
  if (setAsDefault) {
    defaults = values;
  }
}

configItem::configItem(const std::vector<std::string>& allValues, const std::string& source,
                       bool DNvalues, bool setAsDefault)
    : values(allValues), sourceDN(source, DistName::SIMPLE), m_isDN(DNvalues) {
  if (setAsDefault) {
    defaults = values;
  }
}

const std::string& configItem::operator[](int index) const {
  const auto offset = static_cast<std::size_t>(index);
  return index >= 0 && offset < values.size() ? values[offset] : internal::emptyString();
}

const std::string& configItem::getDefault() const {
  return defaults.empty() ? internal::emptyString() : defaults.front();
}

void configItem::set(const std::string& value) {
  values = std::vector<std::string>{value};  // `value` may be one of the old ones
}

void configItem::set(const std::vector<std::string>& vals) {
  values = vals.empty() ? defaults : vals;
}

void configItem::setDN(const DistName& DN) {
  if (DN.empty()) {
    return;
  }
  if (*internal::configDBflag && !sourceDN.empty() && DN.compare(sourceDN) != 0) {
    commonEvent(WARNING, AUD_DEVEL, EC_DATA_MISMATCH, DN + "=>" + sourceDN, "configItem::setDN");
  }
  sourceDN = DN;
}

// --- configDB --------------------------------------------------------------

configDB::configDB(refType type) : countedMapRef(type) {}

configDB::~configDB() = default;

configDB& configDB::operator=(refType type) {
  countedMapRef::operator=(countedMapRef(type));
  return *this;
}

template <class Value>
void configDB::setItem(const std::string& key, const Value& value, const DistName& DN, bool isDN,
                       bool setAsDefault, const char* operation) {
  configItem& item = make(key, true);
  if (item.empty()) {
    item = configItem(value, DN.str(), isDN, setAsDefault);
  } else if (item.isDN() == isDN) {
    item.set(value);
    item.setDN(DN);
  } else {
    commonEvent(FAILURE, AUD_DEVEL, EC_DATA_MISMATCH, key + (isDN ? " non-DN=>DN" : " DN=>non-DN"),
                operation);
  }
}

void configDB::set(const std::string& key, const std::string& value, const DistName& DN, bool isDN,
                   bool setAsDefault) {
  setItem(key, value, DN, isDN, setAsDefault, "configDB::set{scalar}");
}

void configDB::set(const std::string& key, const std::vector<std::string>& values,
                   const DistName& DN, bool isDN, bool setAsDefault) {
  if (!values.empty()) {
    setItem(key, values, DN, isDN, setAsDefault, "configDB::set{vector}");
  }
}

void configDB::set(const std::string& key, const char* const* values, const DistName& DN, bool isDN,
                   bool) {
  if (values != nullptr) {
    set(key, vectorOfStrings(values), DN, isDN, false);  // never a default: callers rely on it
  }
}

// --- editableConfigDB ------------------------------------------------------

editableConfigDB::~editableConfigDB() {
  static constexpr const char* OPERATION = "editableConfigDB::~editableConfigDB";
  if (stage() != RCS_PRIVATE) {
    commonEvent(FAILURE, AUD_ALL, EC_BAD_SEQUENCE, "configDB not RCS_PRIVATE", OPERATION);
  } else if (!setCanonical(true)) {
    commonEvent(FAILURE, AUD_ALL, EC_FUNC_FAILED, "setCanonical()", OPERATION);
  }
}

// --- writeableConfigDB -----------------------------------------------------

bool writeableConfigDB::finalise() {
  ThreadData::instance(false);
  languageString::finalise();
  const bool published = setCanonical(true);
  *this = RT_NULL;
  return published;
}

// --- threadedConfigDB ------------------------------------------------------

threadedConfigDB& threadedConfigDB::theReference = threadedConfigDB::theInstance();

namespace {

// The slot must exist before any thread data does.
struct slot {
  slot() { threadedConfigDB::theInstance(); }
};
[[gnu::init_priority(internal::START_ITEMS), gnu::used]] const slot theSlot;

}  // namespace

threadedConfigDB& threadedConfigDB::theInstance() {
  static internal::lasting<threadedConfigDB> instance([] { return threadedConfigDB(); });
  return *instance;
}

configDB& threadedConfigDB::local() {
  ThreadedDataObject* const object = theInstance().data(true);
  if (object == nullptr) {
    static internal::lasting<configDB> none(RT_NULL);
    return *none;
  }
  // The dynamic cast is slow, and the usual type does not need it.
  return typeid(*object) == typeid(configDB) ? static_cast<configDB&>(*object)
                                             : dynamic_cast<configDB&>(*object);
}

void threadedConfigDB::refresh() {
  if (theInstance().data(true) != nullptr) {
    local() = RT_READ;
  }
}

ThreadedDataObject* threadedConfigDB::create() const {
  return new configDB(RT_READ);
}

const char* threadedConfigDB::name() const {
  return "threadedConfigDB";
}
