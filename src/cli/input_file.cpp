#include "cli/input_file.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <istream>
#include <string_view>

#include "app/startup/program.h"
#include "platform/new_file.h"

namespace orvalo::cli {

namespace {

constexpr std::uint64_t kLargestCopy = 1u << 30;  // bytes
constexpr char kCopyName[] = "/.import";

std::string Named(const std::string& path) {
  return path == kStandardInput ? "The standard input" : "The file " + path;
}

// Hands everything on in pieces; false when `take` has refused one, or there is too much.
bool Pump(std::istream& stream, std::uint64_t limit,
          const std::function<bool(std::string_view)>& take) {
  std::string piece(64u << 10, '\0');
  for (std::uint64_t taken = 0; stream;) {
    stream.read(piece.data(), static_cast<std::streamsize>(piece.size()));
    const auto size = static_cast<std::size_t>(stream.gcount());
    taken += size;
    if (taken > limit || !take(std::string_view(piece).substr(0, size))) return false;
  }
  return true;
}

// Of the file, whatever its kind, or of the standard input.
void PumpFrom(Context& context, const std::string& path, std::uint64_t limit,
              const std::function<bool(std::string_view)>& take) {
  std::ifstream file;
  if (path != kStandardInput) {
    file.open(path, std::ios::binary);
    if (!file || std::filesystem::is_directory(path))
      throw CommandError(ExitCode::kFailed, Named(path) + " cannot be read");
  }
  std::istream& stream = path == kStandardInput ? context.in : file;
  if (!Pump(stream, limit, take) || stream.bad()) {
    throw CommandError(ExitCode::kFailed,
                       Named(path) + " cannot be read to its end, or is too large");
  }
}

}  // namespace

std::string ReadInput(Context& context, const std::string& path, std::uint64_t limit) {
  std::string text;
  PumpFrom(context, path, limit, [&](std::string_view piece) {
    text += piece;
    return true;
  });
  return text;
}

SeekableInput::SeekableInput(Context& context, const std::string& path) : path_(path) {
  std::error_code ignored;
  const bool pipe = path == kStandardInput || (std::filesystem::exists(path, ignored) &&
                                               !std::filesystem::is_regular_file(path, ignored) &&
                                               !std::filesystem::is_directory(path, ignored));
  if (!pipe) return;
  path_ = context.program.DataFolder() + kCopyName;
  const auto copy = platform::NewFile::Create(path_);
  copied_ = copy != nullptr;
  try {
    PumpFrom(context, path, kLargestCopy, [&](std::string_view piece) {
      return copied_ && copy->Write(piece) == static_cast<std::ptrdiff_t>(piece.size());
    });
    if (!copied_ || !copy->Close())
      throw CommandError(ExitCode::kFailed, "The input cannot be copied to the data folder");
  } catch (const CommandError&) {
    std::remove(path_.c_str());
    throw;
  }
}

SeekableInput::~SeekableInput() {
  if (copied_) std::remove(path_.c_str());
}

}  // namespace orvalo::cli
