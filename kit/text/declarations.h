// Where a text says in which charset it is.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ksv_kit {

// What a text is to say.
struct DeclaredName {
  std::string name;
  // Whether XML in this charset has to say so, also where it has not done so yet.
  bool isNeededByXml = false;
};

struct TextEdit {
  size_t at;
  size_t length;  // of what is replaced
  std::string by;
};

// What has to change for a text to say that it is in another charset, in the order of the places;
// behind each there is at least one more byte of the beginning. It is looked for
//
// - in an XML declaration that the text begins with (XML 1.0, XMLDecl and TextDecl);
// - in the @charset that a style sheet begins with;
// - in the meta elements that the prescan of the HTML standard finds in the beginning. That one
//   ends at the first that names a charset; here the others are changed as well.
//
// What is not written as a name, such as a variable of a template, stays. beginning: in UTF-8; a
// byte-order mark in front of it is none of it. The prescan sees so much of it as is given.
std::vector<TextEdit> declarationEdits(std::string_view beginning, const DeclaredName& declared);

}  // namespace ksv_kit
