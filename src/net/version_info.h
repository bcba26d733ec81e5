#pragma once
#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orvalo {

class AppSettings;
class GatewayClient;
class Texts;

// A version of four parts ("3.2.1.16") as two words; later versions compare greater.
struct FileVersion {
  std::uint32_t high = 0;  // first part << 16 | second part
  std::uint32_t low = 0;   // third part << 16 | fourth part

  static constexpr FileVersion FromParts(const std::array<std::int32_t, 4>& parts) {
    const auto word = [](std::int32_t upper, std::int32_t lower) {
      return static_cast<std::uint32_t>(upper) << 16 | (static_cast<std::uint32_t>(lower) & 0xFFFF);
    };
    return {word(parts[0], parts[1]), word(parts[2], parts[3])};
  }
  constexpr std::array<std::int32_t, 4> Parts() const {
    return {static_cast<std::int32_t>(high >> 16), static_cast<std::int32_t>(high & 0xFFFF),
            static_cast<std::int32_t>(low >> 16), static_cast<std::int32_t>(low & 0xFFFF)};
  }
  // NOLINTNEXTLINE(modernize-use-nullptr): the 0 of a comparison is the compiler's own
  constexpr auto operator<=>(const FileVersion&) const = default;
};

// A module's version block.
struct VersionInfo {
  static constexpr std::uint32_t kSignature = 0xFEEF04BD;
  static constexpr std::uint16_t kUsualCodePage = 1252;

  // The fixed block: signature, structure version, file version (high, low), product version (high,
  // low), flags mask, flags, system, type, subtype, date (high, low).
  std::array<std::uint32_t, 13> fixed{};
  // Of the first translation.
  std::uint16_t language = 0;
  std::uint16_t code_page = kUsualCodePage;
  std::string block;  // raw, as the module carries it

  FileVersion file_version() const { return {fixed[2], fixed[3]}; }
};

// Reads the version block of a module, as platform::ReadVersionResource finds it; none (empty) is
// the program itself. False, leaving `info` as it was, when there is none or its signature is
// foreign. Any thread.
bool ReadVersionInfo(const std::string& module, VersionInfo* info);

// Up to four decimal numbers joined by points at the start of a text ("3.2.1.17"); what cannot be
// read counts as 0, and so does everything after it.
FileVersion ParseFileVersion(std::string_view text);

// This program's own version, from its file; 0.0.0.0 when that cannot be read.
FileVersion ProgramVersion();

// Whether this installation is the product's own, by its client id.
bool IsOwnInstallation(const AppSettings& settings);

// The product's name where the installation is the product's own, else the plain "SMS": the title
// of the main window and the first line of the version window.
std::string ProgramTitle(const AppSettings& settings, const Texts& texts);

// The lines of the "Version information" window: the program's name, its version, and the version
// of the gateway component (empty behind its title when the component gives none, or is null).
std::array<std::string, 3> VersionLines(const AppSettings& settings, const Texts& texts,
                                        GatewayClient* gateway);

}  // namespace orvalo
