#include "kit/documents/properties/property_set.h"

#include <algorithm>

namespace ksv_kit::properties {

const char* wordsOf(Damage kind) {
  switch (kind) {
    case Damage::kNoHeader:
      return "does not begin as a property set";
    case Damage::kSectionOutside:
      return "a section begins behind the end";
    case Damage::kSectionCut:
      return "a section is cut";
    case Damage::kListCut:
      return "the list of properties is cut";
    case Damage::kPropertyOutside:
      return "a property begins outside its section";
    case Damage::kBeyondSection:
      return "a property is behind the end of its section";
    case Damage::kValueCut:
      return "a value is cut";
    case Damage::kDictionaryCut:
      return "the dictionary is cut";
    case Damage::kUnknownType:
      return "a value has an unknown type";
    case Damage::kTooDeep:
      return "a value has too many values within each other";
    case Damage::kTwice:
      return "a property is there twice";
    case Damage::kOverlapping:
      break;
  }
  return "properties lie upon each other";
}

bool losesSomething(Damage kind) {
  return kind != Damage::kSectionCut && kind != Damage::kBeyondSection &&
         kind != Damage::kUnknownType;
}

const Property* Section::find(uint32_t id) const {
  const auto found = std::find_if(properties.begin(), properties.end(),
                                  [&](const Property& property) { return property.id == id; });
  return found == properties.end() ? nullptr : &*found;
}

Section* PropertySet::find(std::string_view format) {
  const auto found = std::find_if(sections.begin(), sections.end(),
                                  [&](const Section& section) { return section.format == format; });
  return found == sections.end() ? nullptr : &*found;
}

const Section* PropertySet::find(std::string_view format) const {
  return const_cast<PropertySet*>(this)->find(format);
}

}  // namespace ksv_kit::properties
