#pragma once
#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace orvalo::test {

// Runs `work` in a process of its own, for which `folder` (which is made) is a disk of so many
// bytes. True when it has ended with all its expectations met; nothing where no disk can be made,
// which takes an administrator. For processes that have one thread.
std::optional<bool> OnSmallDisk(const std::string& folder, std::size_t bytes,
                                const std::function<void()>& work);

// Writes the file as large as there is room for it.
void FillDisk(const std::string& path);

}  // namespace orvalo::test
