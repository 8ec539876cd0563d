#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tacla::testing {

// A folder of the test's own that is gone with it.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
};

std::string readBytes(const std::filesystem::path&); // "" when there is no such file
void writeBytes(const std::filesystem::path&, std::string_view bytes);

}
