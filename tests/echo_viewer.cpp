// SPDX-License-Identifier: MIT
// A viewer that writes to descriptor 9 the path that it was executed by and then each
// argument, each followed by a NUL.  It is linked statically, to start quickly.

#include <sys/auxv.h>
#include <unistd.h>

#include <cstring>
#include <string>

int main(int, char** arguments) {
  std::string text = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
  text += '\0';
  for (; *arguments != nullptr; ++arguments) {
    text.append(*arguments, std::strlen(*arguments) + 1);
  }
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t count = write(9, text.data() + done, text.size() - done);
    if (count <= 0) {
      return 1;
    }
    done += static_cast<std::size_t>(count);
  }
  return 0;
}
