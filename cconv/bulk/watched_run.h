// Runs by vectors, of which those are told that look at what was read.
#pragma once

#include "cconv/bulk/lanes.h"
#include "cconv/engine/run_watch.h"

namespace ksv {

// Tells what a run has read when it is over.
template <typename Form>
class WatchedRun {
 public:
  explicit WatchedRun(const BulkPosition& at)
      : watch_(runWatch()), at_(at), begin_(at.input), beginsInPairs_(isInPairs(at)) {}
  ~WatchedRun() {
    if (watch_ != nullptr)
      watch_->passed(*watch_, {begin_, at_.input, beginsInPairs_, isInPairs(at_)});
  }
  WatchedRun(const WatchedRun&) = delete;
  WatchedRun& operator=(const WatchedRun&) = delete;

 private:
  static bool isInPairs(const BulkPosition& at) {
    if constexpr (Form::kShifts) return at.decoderState == Form::kPairGroup;
    return false;
  }

  RunWatch* const watch_;
  const BulkPosition& at_;
  const uint8_t* const begin_;
  const bool beginsInPairs_;
};

template <typename Form>
void runLaneByVectors(const Lane& lane, BulkPosition& at, uint32_t wanted) {
  if (lane.runByVectors == nullptr) return;
  const WatchedRun<Form> watched(at);
  RunTables run = lane.run();
  PlainPages pages;
  if (lane.writesUnits()) {
    lane.pages.copyTo(pages);
    run.pages = &pages;
    pauseForTests(PublicationStep::kCopied);
  }
  lane.runByVectors(run, at, wanted);
}

}  // namespace ksv
