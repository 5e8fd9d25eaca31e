#include "settings_file.h"
#include "settings.h"
namespace hopopen {
std::string changeSettings(const std::string&, const change&) {
  return "x";
}
settings readSettings(const std::string&, const std::string& file, faults&) {
  settings s;
  s.file = file;
  return s;
}
}  // namespace hopopen
