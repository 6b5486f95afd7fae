// Lets no character through that a convention does not have.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kit/convert/stage.h"
#include "kit/profiles/profile.h"
#include "kit/text/offset_links.h"

namespace ksv_kit {

class RefusalStage : public Stage {
 public:
  // kind: kInvalid for what a source does not have, kUnmappable for what a target lacks. The
  // policy outlives the stage. charset: how it is shown. lookAlikes: for the policy that asks for
  // them; may be null.
  using LookAlikes = std::vector<std::string> (*)(uint32_t);
  RefusalStage(RefusedCharacters refused, ProblemKind kind, const Policy& policy,
               std::string charset, LookAlikes lookAlikes);

  bool take(const uint8_t* bytes, size_t size, PieceEnd end, ByteBuffer& out) override;
  void restart() override;
  uint64_t originOf(uint64_t made) const override { return links_.originOf(made); }
  ProblemCounts counts() const override { return counts_; }

 private:
  bool answer(uint32_t character, size_t length, uint64_t at, ByteBuffer& out);
  std::string textOf(const Answer& answer, uint32_t character) const;
  bool refusesAnyOf(std::string_view text) const;
  Problem problemOf(uint32_t character, uint64_t at) const;

  const RefusedCharacters refused_;
  const ProblemKind kind_;
  const Policy& policy_;
  const std::string charset_;
  const LookAlikes lookAlikes_;
  OffsetLinks links_;
  uint64_t taken_ = 0;
  uint64_t made_ = 0;
  uint64_t pieceBegin_ = 0;
  ProblemCounts counts_;
};

}  // namespace ksv_kit
