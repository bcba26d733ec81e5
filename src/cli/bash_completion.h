#pragma once
#include <string>

namespace CLI {
class App;
}

namespace orvalo::cli {

// A script that completes the program's command line in bash: commands, options, files and the
// words that an option can have. Made from the parser, so it knows what the program knows.
std::string BashCompletion(const CLI::App& app);

}  // namespace orvalo::cli
