// SPDX-License-Identifier: MIT
// A custom event handler, which writes each report as a line of JSON (RFC 8259), and a
// custom report, with a domain and codes of its own.

#include <hoplaunch/conversion.h>
#include <hoplaunch/datetime.h>
#include <hoplaunch/events.h>
#include <hoplaunch/threading.h>

#include <iostream>
#include <string>

namespace {

// `text` as a JSON string.  A byte that is not UTF-8 is read as ISO 8859-1.
std::string json(const std::string& text) {
  std::string result = "\"";
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  for (const auto* const end = p + text.size(); p < end; p++) {
    const auto character = getUTF8(p, static_cast<unsigned int>(end - p), false);
    if (character < 32) {
      result += "\\u" + int2hex(character, 4);
    } else if (character == '"' || character == '\\') {
      result += '\\';
      result += static_cast<char>(character);
    } else {
      unsigned char bytes[4];
      const int length = putUTF8(static_cast<unsigned long>(character), bytes);
      result.append(bytes, bytes + length);
    }
  }
  return result + '"';
}

class jsonHandler : public eventHandler {
 public:
  // A priority below 10 sees reports: there the storing handler claims all that are left.
  jsonHandler(std::ostream& out, int priority, eventAudience audience)
      : eventHandler(priority), m_out(out), m_audience(audience) {}

  bool handle(eventReport& event) override {
    if ((event.audience() & m_audience) != AUD_NULL) {
      // The text is made before the section is taken: no other must be held meanwhile.
      const std::string line = toJSON(event);
      clearAudience(event, m_audience);
      const criticalSection section(CS_LOGOUT, false);
      m_out << line << std::endl;
    }
    return event.audience() == AUD_NULL;  // true ends the walk
  }

  const char* name() const override { return "jsonHandler"; }

 private:
  static std::string toJSON(const eventReport& event) {
    std::string line = "{\"time\":" + json(DateTime::now(0).format(DS_ISO8601));
    line += ",\"severity\":" + json(text(event.severity()));
    line += ",\"audience\":" + json(text(event.audience()));
    line += ",\"domain\":" + json(event.domain());
    line += ",\"code\":" + int2decimal(event.code());
    line += ",\"text\":" + json(event.codeText());
    line += ",\"qualifier\":" + json(event.qualifier());
    line += ",\"parameters\":[";
    const char* separator = "";
    for (const std::string& parameter : event.parameters()) {
      line += separator;
      line += json(parameter);
      separator = ",";
    }
    line += "],\"operation\":" + json(event.operation());
    return line + "}";
  }

  std::ostream& m_out;
  eventAudience m_audience;
};

enum diskCode : int { DISK_FULL = 0, DISK_SLOW = 1 };

class diskEvent : public eventReport {
 public:
  diskEvent(eventSeverity severity, diskCode code, const std::string& disk)
      : eventReport(severity, AUD_ADMIN, code, disk, "diskEvent example") {}
  // The outermost class offers the report: in the base's destructor it is half gone.
  ~diskEvent() override { report(); }
  using eventReport::codeToText;
  const char* domain() const override { return "disk"; }
  std::string codeToText(int code) const override {
    return code == DISK_FULL ? "full" : code == DISK_SLOW ? "slow" : "<unknown diskCode>";
  }
};

}  // namespace

int main() {
  ThreadData::instance(false);  // handlers belong to a thread's data
  const jsonHandler handler(std::cout, 5, AUD_USER | AUD_ADMIN);

  // A report that is constructed is reported, here at the end of the statement.
  commonEvent(FAILURE, AUD_ALL, EC_BAD_FORMAT, "caf\xC3\xA9 \"\xFF\"\n", "reading the menu");
  diskEvent(WARNING, DISK_SLOW, "/dev/sda");
  {
    diskEvent event(SEVERE, DISK_FULL, "/dev/sdb");
    event.addParameter("512 MB");
    event.addParameter("100 %");
  }
  // For developers only: the handler leaves it to others.
  commonEvent(WARNING, AUD_DEVEL, EC_COMMENT, "not for users", "main");
  return 0;
}
