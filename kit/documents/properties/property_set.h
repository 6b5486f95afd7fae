// A property set: a stream of one or two sections, each a list of numbered properties of its own
// format, as "OLE property set data structures" publishes them.
//
//   PropertySet set = readPropertySet(bytes);   // what is sound in them, and what is damaged
//   readTexts(set);                             // code_page_text.h: texts become UTF-8
//   std::string again = written(set);           // property_set_writer.h
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kit/documents/properties/value.h"

namespace ksv_kit::properties {

// The first two bytes of a set.
inline constexpr uint32_t kByteOrder = 0xFFFE;

// Properties that say something of their section.
inline constexpr uint32_t kDictionaryId = 0;
inline constexpr uint32_t kCodePageId = 1;
inline constexpr uint32_t kLocaleId = 0x80000000;
inline constexpr uint32_t kBehaviourId = 0x80000003;

inline constexpr uint16_t kUtf16Page = 1200;
inline constexpr uint16_t kUtf8Page = 65001;

// What is wrong with the bytes of a set.
enum class Damage {
  kNoHeader,         // they do not begin as a set does
  kSectionOutside,   // a section begins behind the end
  kSectionCut,       // a section says that it is longer than what is there
  kListCut,          // a section says that it has more properties than there is room for
  kPropertyOutside,  // a property begins outside its section
  kBeyondSection,    // a property is behind where its section says it ends
  kValueCut,         // a value is longer than what is there
  kDictionaryCut,    // the names of the dictionary are longer than what is there
  kUnknownType,      // a type that the format does not have; its bytes are kept
  kTooDeep,          // values within values beyond any sense
  kTwice,            // a number that an earlier property has
  kOverlapping       // properties lie upon each other: together they are far longer than the set
};

struct DamageNote {
  Damage kind;
  uint64_t offset;  // in the stream
  size_t section;   // its index; 0 where it is about none
  std::optional<uint32_t> property;

  bool operator==(const DamageNote&) const = default;
};
// One line, without the place.
const char* wordsOf(Damage kind);
// Whether something of the set has not been read, which it would lose if it were written anew.
bool losesSomething(Damage kind);

struct Property {
  uint32_t id = 0;
  uint64_t offset = 0;  // in the stream
  std::string name{};   // UTF-8: the one that the dictionary gives it; empty: none
  Value value;
  std::string stored;              // type and value as they stand in the stream; empty: made anew
  std::vector<std::string> notes;  // what is to be known of the value beside it
};

struct DictionaryEntry {
  uint32_t id = 0;
  std::string bytes;  // in the code page, terminator included
  std::string name;   // UTF-8

  bool operator==(const DictionaryEntry&) const = default;
};

struct Section {
  Guid format;
  uint64_t offset = 0;
  uint16_t codePage = 0;  // 0: it does not say
  std::vector<DictionaryEntry> dictionary;
  std::vector<Property> properties;  // all but the dictionary, in the order of the stream's list
  std::vector<std::string> notes;

  const Property* find(uint32_t id) const;
};

struct PropertySet {
  uint16_t version = 0;
  uint32_t system = 0;
  Guid classId;
  std::vector<Section> sections;
  std::vector<DamageNote> damages;

  Section* find(std::string_view format);
  const Section* find(std::string_view format) const;
};

// Whether bytes begin as a set does; 28 are enough.
bool beginsAsPropertySet(Bytes bytes);

// Costs time and memory in proportion to the bytes, whatever they say.
PropertySet readPropertySet(Bytes bytes);

}  // namespace ksv_kit::properties
