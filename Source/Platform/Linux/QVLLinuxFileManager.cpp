#include "QVLLinuxFileManager.h"

#include "QVLLinuxFileDescriptor.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <random>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr mode_t kPermissionBits = 07777;

std::string reason(const char* operation, const std::error_code& error) {
    return std::string(operation) + ": " + error.message();
}

/// The reason of the system call that has just failed.
std::string lastReason(const char* operation) {
    return reason(operation, std::error_code(errno, std::system_category()));
}

/// The system would cut the path off at a NUL byte, and so mean another item.
bool isUsable(const std::string& path) {
    const bool isUsable = !path.empty() && path.find('\0') == std::string::npos;
    if (!isUsable) {
        errno = path.empty() ? ENOENT : EINVAL;
    }
    return isUsable;
}

/// The path at the end of a chain of symbolic links, also when nothing stands there. A chain that is too long or closed
/// is left to the next call to complain about.
std::string withoutLinks(const std::string& path) {
    constexpr int kLongestChain = 40;
    fs::path target = path;
    for (int length = 0; length < kLongestChain; ++length) {
        std::error_code error;
        const fs::path next = fs::read_symlink(target, error);
        if (error) {
            break;
        }
        target = target.parent_path() / next;
    }
    return target.string();
}

/// Never empty.
fs::path directoryOf(const std::string& path) {
    const fs::path directory = fs::path(path).parent_path();
    return directory.empty() ? "." : directory;
}

constexpr std::string_view kReplacementPrefix = ".quorvel-";
constexpr std::size_t kReplacementDigits = 16;

/// A name that no other write takes: drawn once for the process, then counted on.
std::string nameOfReplacement() {
    static std::atomic<std::uint64_t> next = [] {
        std::random_device random;
        return (std::uint64_t{random()} << 32) | random();
    }();
    std::array<char, kReplacementDigits + 1> digits;
    std::snprintf(digits.data(), digits.size(), "%016" PRIx64, next++);
    return std::string(kReplacementPrefix) + digits.data();
}

bool isNameOfReplacement(std::string_view name) {
    return name.starts_with(kReplacementPrefix) && name.size() == kReplacementPrefix.size() + kReplacementDigits &&
           name.find_first_not_of("0123456789abcdef", kReplacementPrefix.size()) == std::string_view::npos;
}

/// A new file beside the target, which replaces the target on `commit` and is gone otherwise.
class Replacement {
public:
    Replacement(const std::string& target, QVLDurability durability)
        : m_target(target), m_isDurable(durability == QVLDurability::Durable) {}
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement() {
        if (m_isMade) {
            ::unlink(m_path.c_str());
        }
    }

    QVLOutcome write(std::string_view data) {
        struct stat old = {};
        const bool isNew = ::stat(m_target.c_str(), &old) != 0;
        if (isNew && errno != ENOENT) {
            return QVLOutcome::failure(lastReason("stat"));
        }
        // A replacement is never open to more readers than the file that it replaces, not even before it is complete.
        auto file = make(isNew ? 0666 : old.st_mode & 0777);
        if (!file) {
            return QVLOutcome::failure(lastReason("open"));
        }
        if (!isNew && ::fchmod(file.number(), old.st_mode & kPermissionBits) != 0) {
            return QVLOutcome::failure(lastReason("chmod"));
        }
        if (!file.writeAll(data.data(), data.size())) {
            return QVLOutcome::failure(lastReason("write"));
        }
        if (m_isDurable && !file.synchronize()) {
            return QVLOutcome::failure(lastReason("fsync"));
        }
        // Before the old file is given up: network file systems tell of a full disk only now.
        return file.close() ? QVLOutcome::success() : QVLOutcome::failure(lastReason("close"));
    }

    QVLOutcome commit() {
        if (::rename(m_path.c_str(), m_target.c_str()) != 0) {
            return QVLOutcome::failure(lastReason("rename"));
        }
        m_isMade = false;
        if (m_isDurable) {
            synchronizeDirectory();
        }
        return QVLOutcome::success();
    }

private:
    [[nodiscard]] QVLLinuxFileDescriptor make(mode_t mode) {
        // A process that was forked off counts on from the same name.
        constexpr int kMostAttempts = 100;
        for (int attempt = 1;; ++attempt) {
            m_path = (directoryOf(m_target) / nameOfReplacement()).string();
            auto file = QVLLinuxFileDescriptor::open(m_path, O_WRONLY | O_CREAT | O_EXCL, mode);
            m_isMade = static_cast<bool>(file);
            if (m_isMade || errno != EEXIST || attempt == kMostAttempts) {
                return file;
            }
        }
    }

    /// The new file stands already, so this cannot fail the write any more; some file systems refuse it.
    void synchronizeDirectory() const {
        const auto descriptor = QVLLinuxFileDescriptor::open(directoryOf(m_target), O_RDONLY | O_DIRECTORY);
        if (descriptor) {
            static_cast<void>(descriptor.synchronize());
        }
    }

    std::string m_target;
    std::string m_path;
    bool m_isDurable;
    bool m_isMade = false;
};

/// No write takes this long.
constexpr std::time_t kSecondsUntilLeft = 3600;

void removeIfLeft(const std::string& replacement) {
    struct stat status = {};
    const bool isOld = ::lstat(replacement.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
                       status.st_mtime < ::time(nullptr) - kSecondsUntilLeft;
    if (isOld) {
        ::unlink(replacement.c_str());
    }
}

QVLDate dateFrom(const struct statx_timestamp& stamp) {
    return QVLDate(std::chrono::seconds(stamp.tv_sec)) + std::chrono::microseconds(stamp.tv_nsec / 1000);
}

} // namespace

QVLFileManager::ItemKind QVLLinuxFileManager::itemKindAtPath(const std::string& path) const {
    struct stat status = {};
    if (!isUsable(path) || ::stat(path.c_str(), &status) != 0) {
        return ItemKind::Missing;
    }
    return S_ISDIR(status.st_mode) ? ItemKind::Directory : ItemKind::File;
}

QVLResult<std::string> QVLLinuxFileManager::contentsOfFileAtPath(const std::string& path) const {
    using Result = QVLResult<std::string>;
    if (!isUsable(path)) {
        return Result::failure(lastReason("open"));
    }
    // A pipe in the place of a file would keep the caller waiting, a device would never end: neither is read.
    const auto file = QVLLinuxFileDescriptor::open(path, O_RDONLY | O_NONBLOCK);
    if (!file) {
        return Result::failure(lastReason("open"));
    }
    if (!file.isRegularFile()) {
        return Result::failure("read: Not a regular file");
    }
    std::string data;
    return file.readAll(data) ? Result::success(std::move(data)) : Result::failure(lastReason("read"));
}

QVLOutcome QVLLinuxFileManager::writeAtomically(std::string_view data, const std::string& path,
                                                QVLDurability durability) {
    if (!isUsable(path)) {
        return QVLOutcome::failure(lastReason("open"));
    }
    const std::string target = withoutLinks(path);
    removeLeftoversOnce(directoryOf(target));
    Replacement replacement(target, durability);
    const QVLOutcome written = replacement.write(data);
    return written ? replacement.commit() : written;
}

QVLOutcome QVLLinuxFileManager::removeItemAtPath(const std::string& path) {
    if (!isUsable(path)) {
        return QVLOutcome::failure(lastReason("remove"));
    }
    std::error_code error;
    const auto count = fs::remove_all(path, error);
    if (!error && count == 0) {
        error = std::make_error_code(std::errc::no_such_file_or_directory);
    }
    return error ? QVLOutcome::failure(reason("remove", error)) : QVLOutcome::success();
}

QVLOutcome QVLLinuxFileManager::createDirectoryAtPath(const std::string& path, bool withIntermediateDirectories) {
    if (!isUsable(path)) {
        return QVLOutcome::failure(lastReason("mkdir"));
    }
    if (!withIntermediateDirectories) {
        return ::mkdir(path.c_str(), 0777) == 0 ? QVLOutcome::success() : QVLOutcome::failure(lastReason("mkdir"));
    }
    std::error_code error;
    fs::create_directories(path, error);
    return error ? QVLOutcome::failure(reason("mkdir", error)) : QVLOutcome::success();
}

QVLResult<QVLDate> QVLLinuxFileManager::creationDateOfItemAtPath(const std::string& path) const {
    using Result = QVLResult<QVLDate>;
    struct statx status = {};
    if (!isUsable(path) || ::statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME | STATX_MTIME, &status) != 0) {
        return Result::failure(lastReason("statx"));
    }
    return Result::success(dateFrom((status.stx_mask & STATX_BTIME) ? status.stx_btime : status.stx_mtime));
}

QVLResult<std::vector<std::string>> QVLLinuxFileManager::contentsOfDirectoryAtPath(const std::string& path) const {
    using Result = QVLResult<std::vector<std::string>>;
    if (!isUsable(path)) {
        return Result::failure(lastReason("opendir"));
    }
    std::error_code error;
    std::vector<std::string> names;
    fs::directory_iterator entry(path, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        names.push_back(entry->path().filename().string());
    }
    return error ? Result::failure(reason("opendir", error)) : Result::success(std::move(names));
}

std::string QVLLinuxFileManager::temporaryDirectory() const {
    std::error_code error;
    const fs::path directory = fs::temp_directory_path(error);
    return error ? "/tmp" : directory.string();
}

void QVLLinuxFileManager::removeLeftoversOnce(const std::string& directory) {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_tidiedDirectories.insert(directory).second) {
            return;
        }
    }
    for (const std::string& name : contentsOfDirectoryAtPath(directory).value.value_or(std::vector<std::string>())) {
        if (isNameOfReplacement(name)) {
            removeIfLeft((fs::path(directory) / name).string());
        }
    }
}
