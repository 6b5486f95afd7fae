#include "kit/convert/shift_filter_stage.h"

#include <algorithm>
#include <utility>

#include "kit/text/offset_links.h"

namespace ksv_kit {

ShiftFilterStage::ShiftFilterStage(MakeFilter makeFilter, Encode encode, const Policy& invalid,
                                   std::string charset)
    : makeFilter_(std::move(makeFilter)),
      encode_(std::move(encode)),
      invalid_(invalid),
      charset_(std::move(charset)),
      filter_(makeFilter_()) {}

void ShiftFilterStage::restart() {
  filter_ = makeFilter_();
  insertions_.clear();
  latest_.clear();
  taken_ = made_ = inserted_ = pieceBegin_ = filteredBefore_ = 0;
  counts_ = {};
  forgetProblem();
}

// What is refused only because nothing follows is a character that the end cuts.
bool ShiftFilterStage::take(const uint8_t* bytes, size_t size, PieceEnd end, ByteBuffer& out) {
  forgetOldInsertions();
  filter_->forgetBefore(filteredBefore_);
  pieceBegin_ = made_;
  filteredBefore_ = made_ - inserted_;
  if (!filter(bytes, size, false, out)) return false;
  return end != PieceEnd::kEnd || filter(nullptr, 0, true, out);
}

// Of those in front of the latest piece only what they add up to counts, which the last one tells.
void ShiftFilterStage::forgetOldInsertions() {
  const auto young =
      std::find_if(insertions_.begin(), insertions_.end(), [&](const Insertion& insertion) {
        return insertion.made + OffsetLinks::kHeldBehind >= pieceBegin_;
      });
  if (young - insertions_.begin() > 1) insertions_.erase(insertions_.begin(), young - 1);
}

bool ShiftFilterStage::filter(const uint8_t* bytes, size_t size, bool isEnd, ByteBuffer& out) {
  size_t at = 0;
  for (;;) {
    size_t bad = 0;
    const size_t used = filter_->filter(bytes + at, size - at, isEnd, filtered_, bad);
    append(out);
    if (bad == 0) break;
    const size_t before = filter_->refusedBefore();
    const size_t here = bad - std::min(bad, before);
    noteUsed(bytes + at, used + here);
    if (!answer(bad, taken_ + used - before, isEnd, out)) return false;
    counts_.invalidBytes += bad;
    taken_ += used + here;
    at += used + here;
    if (at == size && !isEnd) break;
  }
  noteUsed(bytes + at, size - at);
  taken_ += size - at;
  return true;
}

void ShiftFilterStage::append(ByteBuffer& out) {
  out.append(filtered_.data(), filtered_.size());
  made_ += filtered_.size();
  filtered_.clear();
}

// The latest bytes: some of them the filter may have kept, and refuse later.
void ShiftFilterStage::noteUsed(const uint8_t* bytes, size_t size) {
  constexpr size_t kMostKept = 32;
  if (size == 0) return;
  latest_.append(reinterpret_cast<const char*>(bytes), size);
  if (latest_.size() > kMostKept) latest_.erase(0, latest_.size() - kMostKept);
}

// The latest bytes of what was used are bad.
bool ShiftFilterStage::answer(size_t bad, uint64_t at, bool isCut, ByteBuffer& out) {
  if (invalid_.kind == PolicyKind::kSkip) return true;
  Problem problem;
  problem.kind = isCut ? ProblemKind::kTruncated : ProblemKind::kInvalid;
  problem.offset = placeInText(at);
  problem.bytes = latest_.substr(latest_.size() - std::min(bad, latest_.size()));
  problem.message = messageOf(problem.kind, charset_, problem.bytes);
  const Answer answer = answerBy(invalid_, problem);
  if (answer.kind == Answer::Kind::kFail) return fail(problem);
  const std::string text = encode_(answer.text);
  out.append(text);
  inserted_ += text.size();
  insertions_.push_back({made_, text.size(), inserted_, at});
  made_ += text.size();
  return true;
}

uint64_t ShiftFilterStage::originOf(uint64_t made) const {
  const auto behind = std::upper_bound(
      insertions_.begin(), insertions_.end(), made,
      [](uint64_t wanted, const Insertion& insertion) { return wanted < insertion.made; });
  if (behind == insertions_.begin()) return filter_->originOf(made);
  const Insertion& last = *(behind - 1);
  const bool isInside = made - last.made < last.length;
  return isInside ? last.origin : filter_->originOf(made - last.total);
}

}  // namespace ksv_kit
