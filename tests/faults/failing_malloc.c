// Memory that cannot be had: loaded in front of a program (LD_PRELOAD), it lets one allocation
// fail, or all from one on.
//
//   KSV_FAIL_AT=N     the Nth allocation fails, counted from 1 over all threads
//   KSV_FAIL_FROM=N   the Nth fails and all behind it
//   KSV_COUNT=FILE    the number of allocations is written there when the program ends
//
// Allocations of the dynamic loader, in front of any code of the program, are not counted.
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <stdatomic.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

extern void* __libc_malloc(size_t size);
extern void* __libc_calloc(size_t count, size_t size);
extern void* __libc_realloc(void* block, size_t size);
extern void* __libc_memalign(size_t alignment, size_t size);

static atomic_ulong counted;
static atomic_int isRead;
static unsigned long failAt;
static unsigned long failFrom;

static unsigned long number(const char* name) {
  const char* text = getenv(name);
  return text == NULL ? 0 : strtoul(text, NULL, 10);
}

// Reading twice at once gives the same.
static void readEnvironment(void) {
  failAt = number("KSV_FAIL_AT");
  failFrom = number("KSV_FAIL_FROM");
  atomic_store(&isRead, 1);
}

static int mustFail(void) {
  if (environ == NULL) return 0;
  if (!atomic_load(&isRead)) readEnvironment();
  const unsigned long now = atomic_fetch_add(&counted, 1) + 1;
  if (now != failAt && (failFrom == 0 || now < failFrom)) return 0;
  errno = ENOMEM;
  return 1;
}

void* malloc(size_t size) { return mustFail() ? NULL : __libc_malloc(size); }

void* calloc(size_t count, size_t size) { return mustFail() ? NULL : __libc_calloc(count, size); }

void* realloc(void* block, size_t size) {
  return mustFail() ? NULL : __libc_realloc(block, size);
}

void* memalign(size_t alignment, size_t size) {
  return mustFail() ? NULL : __libc_memalign(alignment, size);
}

void* aligned_alloc(size_t alignment, size_t size) {
  return mustFail() ? NULL : __libc_memalign(alignment, size);
}

// This one says so by its result, and leaves errno alone.
int posix_memalign(void** block, size_t alignment, size_t size) {
  const int before = errno;
  void* found = mustFail() ? NULL : __libc_memalign(alignment, size);
  errno = before;
  if (found == NULL) return ENOMEM;
  *block = found;
  return 0;
}

__attribute__((destructor)) static void tellCount(void) {
  const char* path = getenv("KSV_COUNT");
  if (path == NULL) return;
  const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
  if (file < 0) return;
  char text[24];
  const int length = snprintf(text, sizeof text, "%lu\n", atomic_load(&counted));
  if (write(file, text, (size_t)length) != length) abort();
  close(file);
}
