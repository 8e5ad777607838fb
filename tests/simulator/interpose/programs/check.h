/* How the programs that try calls say which one did not do its work. */

#pragma once

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

static int failures = 0;

static void check(int good, const char* call) {
  if (!good) {
    fprintf(stderr, "%s: %s\n", call, strerror(errno));
    ++failures;
  }
}

static inline void checkDescriptor(long descriptor, const char* call) {
  check(descriptor >= 0, call);
  if (descriptor >= 0) {
    close((int)descriptor);
  }
}
