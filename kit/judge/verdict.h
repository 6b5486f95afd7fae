// The verdict on a text: what it may be, the likeliest first.
#pragma once

#include "kit/judge/detection.h"
#include "kit/judge/reading.h"
#include "kit/judge/text_sample.h"

namespace ksv_kit::judge {

// Of what was taken of a text so far. isWhole: that is all of it.
Detection verdictOn(const TextSample& sample, const TextFacts& facts, const Hints& hints,
                    bool isWhole);

// Whether the guess is so sure, and of so much text, that more of the same changes nothing.
bool isSettledBy(const Detection& detection, const TextSample& sample, const TextFacts& facts);

// Looks at all of the text for the first guess: the narrowest charset, and what is no text in it.
void confirm(Detection& detection, Bytes text, const TextFacts& facts);

}  // namespace ksv_kit::judge
