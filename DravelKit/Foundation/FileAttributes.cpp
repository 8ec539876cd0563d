#include "DravelKit/Foundation/FileAttributes.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <map>

namespace dravel {

namespace {

// The access list too is an extended attribute; unlike others, a folder hands its default down to new files.
constexpr const char* accessList = "system.posix_acl_access";

using Attributes = std::map<std::string, std::string>;

// What `read` gives for a buffer of the size that it asks for itself; none when it cannot be read.
template <class Read>
std::optional<std::string> sized(Read read) {
    const auto size = read(nullptr, std::size_t{0});
    if (size < 0) return {};
    std::string value(static_cast<std::size_t>(size), '\0');
    const auto length = size == 0 ? 0 : read(value.data(), value.size());
    if (length < 0) return {};
    value.resize(static_cast<std::size_t>(length));
    return value;
}

std::optional<Attributes> attributes(const OpenFile& file) {
    const int descriptor = file.descriptor();
    const auto names = sized([&](char* buffer, std::size_t size) { return ::flistxattr(descriptor, buffer, size); });
    if (!names) return errno == ENOTSUP || errno == ENOSYS ? std::optional(Attributes()) : std::nullopt;
    Attributes found;
    for (std::size_t at = 0; at < names->size();) {
        const std::string name = names->c_str() + at;
        at += name.size() + 1;
        auto value =
            sized([&](char* buffer, std::size_t size) { return ::fgetxattr(descriptor, name.c_str(), buffer, size); });
        if (!value) return {};
        found[name] = std::move(*value);
    }
    return found;
}

bool copyExtended(const OpenFile& from, const OpenFile& to) {
    const auto old = attributes(from);
    const auto fresh = attributes(to);
    if (!old || !fresh) return false;
    if (fresh->contains(accessList) && !old->contains(accessList) && ::fremovexattr(to.descriptor(), accessList) != 0)
        return false;
    for (const auto& [name, value] : *old) {
        const auto same = fresh->find(name);
        if (same != fresh->end() && same->second == value) continue;
        if (::fsetxattr(to.descriptor(), name.c_str(), value.data(), value.size(), 0) != 0) return false;
    }
    return true;
}

}

bool copyAttributes(const OpenFile& from, const OpenFile& to) {
    const auto old = from.status();
    const auto fresh = to.status();
    if ((fresh.st_uid != old.st_uid || fresh.st_gid != old.st_gid) &&
        ::fchown(to.descriptor(), old.st_uid, old.st_gid) != 0)
        return false;
    if (!copyExtended(from, to)) return false;
    // Last: a change of owner or of the access list touches the mode.
    return to.status().st_mode == old.st_mode || ::fchmod(to.descriptor(), old.st_mode & 07777) == 0;
}

}
