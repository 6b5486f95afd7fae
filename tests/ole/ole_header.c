/* ksv_ole.h compiles as C, with nothing before it. */
#include "ksv_ole.h"

#include <stddef.h>

_Static_assert(sizeof(KsvSummarySettings) == 520, "size");
_Static_assert(offsetof(KsvSummarySettings, targetCharset) == 0, "targetCharset");
_Static_assert(offsetof(KsvSummarySettings, language) == 256, "language");
_Static_assert(offsetof(KsvSummarySettings, outputBigEndian) == 512, "outputBigEndian");
_Static_assert(offsetof(KsvSummarySettings, lineEndFlags) == 516, "lineEndFlags");

uint32_t (*const ksvOleHeaderIsC)(Ksv2OleStream* stream, uint32_t offset, uint16_t origin) =
    KSV_2OLEseekStream;
