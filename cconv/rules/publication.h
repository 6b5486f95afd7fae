// What threads share while it is still being filled, and how each piece of it becomes
// visible. Three shapes, and nothing else:
//
// - Made whole, then published: the maker stores a pointer or a flag with release order
//   when nothing about the thing will change any more, and readers load it with acquire
//   order before they look at the thing. Charsets and groups of a packed directory and their
//   names (PackedRuleSet, CharsetNames), code tables (CodeTable::state), pages
//   (DirectTable, EncodedCodeCache), lanes and what they hold from the beginning
//   (AsciiStops, SingleCodes), converters, traces (their key is the flag).
// - Self-contained words: an aligned word that says all by itself, 0 while nobody knows.
//   Readers may see any of them early or late, in any order, since no word relies on
//   another. Short entries, encoded codes, the classes of pages, escape sequences.
// - Copies of self-contained words that a run works with: the copy is older than words of
//   another kind that the run reads later. A run that finds a word which relies on
//   something that its copy lacks takes it for unknown, and leaves the character to the
//   way by single characters (putEntries in avx512_block.h).
//
// The first shape needs order between two stores; the others need none, and must not be
// given a reader that does.
#pragma once

#include <atomic>
#include <memory>

namespace ksv {

// Where a thread stands that others may overtake.
enum class PublicationStep {
  kMade,    // something is made and not published yet
  kWord,    // between one word and the next
  kCopied,  // between a copy and its use
  kFilling  // in the middle of filling a code table, with the lock held
};

// For tests: where it is set, called at each of these steps, so that other threads come in
// between. Null otherwise.
using PublicationPause = void (*)(PublicationStep step);
extern constinit std::atomic<PublicationPause> publicationPauseForTests;

inline void pauseForTests(PublicationStep step) {
  const PublicationPause pause = publicationPauseForTests.load(std::memory_order_relaxed);
  if (pause != nullptr) [[unlikely]]
    pause(step);
}

// The first shape for what one thread makes and all share: what stands at the place afterwards,
// which is what another has put there if that came first. Then what was made is dropped.
template <typename Item, typename Deleter>
Item* publish(std::atomic<Item*>& place, std::unique_ptr<Item, Deleter> made) {
  Item* present = nullptr;
  pauseForTests(PublicationStep::kMade);
  if (place.compare_exchange_strong(present, made.get(), std::memory_order_acq_rel))
    return made.release();
  return present;
}

}  // namespace ksv
