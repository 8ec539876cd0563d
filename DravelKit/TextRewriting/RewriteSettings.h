#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace dravel {

enum class Mode {
    correction, // spelling, grammar and typography, nothing else
    rewrite,    // clearer: same meaning, length and language
    message,    // a message ready to send, out of notes
};

// By which model, and how hard it tries: "low", "medium", "high", or "" for a model that does not know effort.
struct ModeSettings {
    std::string model, effort;
    bool operator==(const ModeSettings&) const = default;
};

// One JSON object in a file that several applications may share: {"correction": {"model": …, "effort": …}, …}. Members
// that we do not know survive every change.
class RewriteSettings {
  public:
    using Report = std::function<void(const std::string& message)>; // French, for the user

    RewriteSettings(std::filesystem::path file, std::filesystem::path lockFolder, Report report);

    // Defaults for what is not there or makes no sense. A damaged file is moved to "….broken" and reported.
    ModeSettings of(Mode) const;

    // Throws RewriteError (badSettings) and FileError.
    void set(Mode, const ModeSettings&);

  private:
    void setAsideIfDamaged() const;

    const std::filesystem::path file_, lockFolder_;
    const Report report_;
};

}
