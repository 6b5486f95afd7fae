#include "kit/judge/binary_content.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

namespace ksv_kit::judge {
namespace {

// The signatures that the formats' own documents give.
constexpr std::string_view kSignatures[] = {
    {"\x89PNG\r\n\x1A\n", 8},
    {"\xFF\xD8\xFF", 3},  // JPEG
    {"GIF87a", 6},
    {"GIF89a", 6},
    {"PK\x03\x04", 4},  // ZIP, and what is packed in it
    {"PK\x05\x06", 4},
    {"\x1F\x8B\x08", 3},  // gzip
    {"\xFD"
     "7zXZ\0",
     6},                      // xz
    {"\x28\xB5\x2F\xFD", 4},  // Zstandard
    {"7z\xBC\xAF\x27\x1C", 6},
    {"Rar!\x1A\x07", 6},
    {"\x7F"
     "ELF",
     4},
    {"\xCA\xFE\xBA\xBE", 4},                  // Java classes
    {"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8},  // compound documents
    {"%PDF-", 5},
    {"II*\0", 4},  // TIFF
    {"MM\0*", 4},
    {"OggS\0", 5},
    {"SQLite format 3\0", 16},
    {"\0asm", 4},
};

}  // namespace

bool looksBinary(Bytes head) {
  return std::any_of(std::begin(kSignatures), std::end(kSignatures),
                     [&](std::string_view signature) {
                       return head.size() >= signature.size() &&
                              std::memcmp(head.data(), signature.data(), signature.size()) == 0;
                     });
}

}  // namespace ksv_kit::judge
