// The version file of an update server, and files that become hexadecimal texts.
#include <fmt/format.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "messages/hex_import.h"
#include "net/version_info.h"
#include "service/secrets.h"

namespace {

void Require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const orvalo::FileVersion version = orvalo::ParseFileVersion(bytes);
  const auto [major, minor, build, revision] = version.Parts();
  Require(orvalo::ParseFileVersion(fmt::format("{}.{}.{}.{}", major, minor, build, revision)) ==
          version);

  const std::string digits = orvalo::ToHexadecimal(bytes);
  Require(digits.size() == 2 * size);
  Require(digits.find_first_not_of("0123456789ABCDEF") == std::string::npos);
  Require(orvalo::service::FromHex(digits) == bytes);
  return 0;
}
