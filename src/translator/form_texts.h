#pragma once
#include <functional>
#include <set>
#include <string>
#include <string_view>

namespace orvalo::translator {

// Gives the translation of a text that an operator sees.
using Translate = std::function<std::string(const std::string& text)>;

// A dialog (a Qt Designer file) with the texts that an operator sees replaced: those of its
// controls' own properties, unless they are marked notr="true" or hold no letter. Style sheets and
// dynamic properties stay. Everything else stays byte for byte.
std::string TranslateForm(std::string_view form, const Translate& translate);

// A menu ("menus/<id>.json") with its "text" members replaced. Throws std::runtime_error when it is
// no menu.
std::string TranslateMenu(std::string_view menu, const Translate& translate);

// The controls of a dialog, each as "class name": what the program looks for in it.
std::set<std::string> ControlsOf(std::string_view form);

}  // namespace orvalo::translator
