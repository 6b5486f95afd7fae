// Every bound of what a mail or a mailbox may cost. What lies beyond one is left out, and told.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ksv_cli::limits {

// So much of a message is kept in memory until it is taken apart; the rest stands in a temporary
// file. Mailboxes consist of messages below it.
constexpr size_t kMostMessageInMemory = 4 * 1024 * 1024;

// The texts of one message, without their transfer encoding. A text is read several times where
// its charset is judged, and people read none that is longer.
constexpr size_t kMostTextOfMessage = 16 * 1024 * 1024;

// All fields of a message and its parts. The library in which messages are taken apart keeps each
// many times over, addresses fifty times; the longest lists of addressees that servers take have
// half of it.
constexpr size_t kMostHeaderBytes = 1024 * 1024;
constexpr size_t kMostFields = 20'000;
// One field, and one that has parameters, each of which that library compares with all others.
constexpr size_t kLongestField = 512 * 1024;
constexpr size_t kLongestContentField = 8 * 1024;
// Encoded words in a field: that library looks for the end of each up to the end of the field.
constexpr size_t kMostWordsOfField = 2000;

// Multiparts in multiparts, and messages in messages. Each line that may be a boundary is compared
// with those of all open multiparts.
constexpr uint32_t kDeepestPart = 64;
// Digests have hundreds.
constexpr uint32_t kMostParts = 10'000;

// Problems of one message that are told one by one; the others are counted.
constexpr size_t kMostToldProblems = 16;

// A name of a saved part in bytes of UTF-8; with a number in front of its extension it still fits
// into the 255 that file systems take.
constexpr size_t kLongestSavedName = 200;
// So many names are tried beside one that is taken.
constexpr uint32_t kMostSameNames = 10'000;

}  // namespace ksv_cli::limits
