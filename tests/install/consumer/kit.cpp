// A program of others, in C++: the same by libksv.
#include <cstdio>
#include <string>

#include "ksv.hpp"

int main() {
  const std::string text = ksv::convert("SJIS", "utf8", "\x93\xFA\x96\x7B");
  for (const char byte : text) std::printf("%02X ", static_cast<unsigned>(static_cast<unsigned char>(byte)));
  std::puts("in C++");
  return 0;
}
