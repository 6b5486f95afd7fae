// For the tests that are bound to POSIX: a process that goes on from here.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

namespace ksv::test {

// Forks a process that runs body and leaves with its result.
template <class Body>
pid_t startForked(Body body) {
  const pid_t child = fork();
  if (child == 0) _exit(body());
  return child;
}

// Its exit status, or -1 when a signal ended it.
inline int resultOf(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Both at once.
template <class Body>
int runInChild(Body body) {
  return resultOf(startForked(body));
}

}  // namespace ksv::test
