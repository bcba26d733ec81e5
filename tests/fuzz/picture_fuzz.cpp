// Hostile picture files: whatever they claim, the preview stays small and quick.
#include <cstdint>
#include <string>

#include "messages/picture_preview.h"

namespace {

void Decode(const std::string& bytes) {
  const auto preview = orvalo::DecodePicture(bytes);
  if (!preview) return;
  for (const std::uint8_t pixel : preview->pixels) {
    if (pixel > 1) __builtin_trap();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  Decode(input);
  Decode("GIF89a" + input);  // past the signature, which mutations lose first
  return 0;
}
