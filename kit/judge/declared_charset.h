// The charset that a text says it is in.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ksv_kit::judge {

struct DeclaredCharset {
  std::string name;
  const char* where;  // "an XML declaration"
};

// By an XML declaration, a meta element of HTML, an @charset of CSS, the header of a mail or of a
// translation, a mode line of an editor. beginning: in bytes that are ASCII's where they look so.
std::optional<DeclaredCharset> declaredCharset(std::string_view beginning);

// The same by an XML declaration that the text begins with, or else by the first meta element of
// HTML that names a charset: what a text declares itself, and no header or editor. Behind the
// beginning nobody looks for one.
std::optional<std::string> declaredInMarkup(std::string_view beginning);

// The charset and the language that a file's name may say: "ru.koi8-r.po".
std::vector<std::string> wordsOfFileName(std::string_view path);

}  // namespace ksv_kit::judge
