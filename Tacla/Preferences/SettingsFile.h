#pragma once

#include <nlohmann/json_fwd.hpp>

#include <filesystem>
#include <functional>
#include <string>

namespace tacla {

// One JSON object in a file that several processes share. Keys that we do not know survive every change.
class SettingsFile {
  public:
    using Report = std::function<void(const std::string& message)>; // French, for the user

    SettingsFile(std::filesystem::path file, std::filesystem::path lockFolder, Report report);

    // Empty when there is no file. A damaged file is moved to "….broken" and reported, and so is read as empty; one
    // that cannot be read is reported, once.
    nlohmann::json read() const;

    // Reads, changes and saves under one lock; writes nothing when nothing changed. Throws dravel::FileError.
    void change(const std::function<void(nlohmann::json& object)>&);

  private:
    void setAsideIfDamaged() const;

    std::filesystem::path file_, lockFolder_;
    Report report_;
    mutable bool reported_ = false;
};

}
