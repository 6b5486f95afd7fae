// The parts of the reference converter that call each other.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference/converter.h"

namespace ksv_reference {

Codec findCodec(const std::string& entryName, const std::string& prefix);

// Replacement pair of initConvert.
void findReplacements(Converter& c);

// Pre-conversions. fits is false when the text was cut at capacity.
std::vector<uint8_t> preConvertUtf7(const uint8_t* input, int32_t length, int32_t capacity,
                                    bool& fits);
std::vector<uint8_t> preConvertHz(const uint8_t* input, int32_t length, int32_t capacity,
                                  bool& fits);

// Leaves the character that was read in the record, with status 11.
void takeCharacter(Converter& c, const Subset& group, uint32_t raw, uint32_t code,
                   uint32_t unicode);

// Decoders: each reads one character and leaves its status.
void decode(Converter& c);
void decodeRuleDriven(Converter& c);
void decodeUcs2(Converter& c);
void decodeUcs4(Converter& c);
void decodeUtf16(Converter& c);
void decodeUtf8(Converter& c);
void decodeShiftJis(Converter& c);
void decodeWindows31j(Converter& c);
void decodeEuc(Converter& c);
void decodeEucJpFix(Converter& c);
void decodeIso2022Jp(Converter& c);
void decodeOasysWin(Converter& c);
void decodeOasysOnline(Converter& c);

// transform: from the number read to the group code; null: none.
void decodeByRules(Converter& c, uint32_t (*transform)(uint32_t));

// Encoders: each maps and writes the current character and leaves its status.
void encode(Converter& c);
// False: nothing is to be written (status 0 on a flush, else 23).
bool mapCharacter(Converter& c);
void writeCharacter(Converter& c);
void encodeUnicode(Converter& c);
void encodeIso2022Jp(Converter& c);
bool writeEucUnit(Converter& c, uint32_t unit);
bool writeEucFixUnit(Converter& c, uint32_t unit);
bool writeUcs2Unit(Converter& c, uint32_t unit);
bool writeUcs4Unit(Converter& c, uint32_t unit);
bool writeUtf16Unit(Converter& c, uint32_t unit);
bool writeUtf8Unit(Converter& c, uint32_t unit);
// Writes width bytes in the output byte order as one unit.
bool writePlainUnit(Converter& c, uint32_t unit, int32_t width);

// Byte pairs and JIS codes; 0 means no code.
uint32_t shiftJisToJis(uint8_t lead, uint8_t trail);
uint32_t shiftJis2004ToJis(uint8_t lead, uint8_t trail);
uint32_t jisToShiftJis(uint32_t code);
uint32_t jisToShiftJis2004(uint32_t code);

}  // namespace ksv_reference
