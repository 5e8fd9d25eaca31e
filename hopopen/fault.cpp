#include "fault.h"

#include "shown.h"

namespace hopopen {

std::string fault::lineOfText() const {
  return printable(file) + ':' + std::to_string(line) + ':' + std::to_string(column) + ": " +
         message;
}

}  // namespace hopopen
