// SPDX-License-Identifier: MIT
/* What a launch must do, and nothing else: both expressions for URIs are compiled and matched,
   the sets of semaphores are drawn, checked, used as often as a launch uses them, and removed.
   Then it becomes the program that its arguments name.

     required URI PROGRAM [ARGUMENT...]

   The build takes the expressions, MACHINE and SCHEME, from utilities/uri.cpp. */

#define _GNU_SOURCE
#include <regex.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include "expressions.h"

enum { SECTIONS = 6, USES = 11 };

static void need(int condition) {
  if (!condition) {
    abort();
  }
}

static void change(int set, unsigned short section, short by, short flags) {
  struct sembuf operation = {section, by, flags};
  need(semtimedop(set, &operation, 1, NULL) == 0);
}

/* A section is taken and released. */
static void use(int set, unsigned short section) {
  change(set, section, -1, 0);
  change(set, section, 1, 0);
}

static int drawn(void) {
  /* The first set finds out whether there is room for two. */
  const int room = semget(IPC_PRIVATE, 1, 0600);
  const int set = semget(IPC_PRIVATE, SECTIONS, 0666);
  need(room != -1 && set != -1 && semctl(room, 0, IPC_RMID) == 0);
  for (unsigned short i = 0; i < SECTIONS; i++) {
    need(semctl(set, i, GETVAL) == 0);
    change(set, i, 1, IPC_NOWAIT);
    need(semctl(set, i, GETVAL) == 1);
  }
  return set;
}

static void parse(const char* uri) {
  regex_t scheme;
  regex_t machine;
  regmatch_t found;
  need(regcomp(&scheme, SCHEME, REG_EXTENDED | REG_ICASE) == 0);
  need(regcomp(&machine, MACHINE, REG_EXTENDED | REG_ICASE) == 0);
  need(regexec(&scheme, uri, 1, &found, 0) == 0 && found.rm_so == 0);
  char address[256];
  const char* const begin = uri + found.rm_eo;
  const size_t length = strcspn(begin, "+,/");
  need(length < sizeof address);
  memcpy(address, begin, length);
  address[length] = '\0';
  need(regexec(&machine, address, 0, NULL, 0) == 0);
  regfree(&machine);
  regfree(&scheme);
}

int main(int count, char** args) {
  need(count > 2);
  const int set = drawn();
  use(set, 0);
  for (int i = 0; i < USES; i++) {
    use(set, 2);
  }
  parse(args[1]);
  need(semctl(set, 0, IPC_RMID) == 0);
  execvp(args[2], args + 2);
  return 1;
}
