#include "atomic_file.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

/// The path that a chain of symbolic links ends in, which need not exist.
fs::path end_of_links(fs::path path) {
    constexpr int longest_chain = 40; // as the kernel has it
    for (int i = 0; i < longest_chain && fs::is_symlink(fs::symlink_status(path)); ++i)
        path = path.parent_path() / fs::read_symlink(path);
    return path;
}

/// Permissions of a file that replaces another one, or of a new one.
void set_permissions(int descriptor, const struct stat* replaced) {
    if (replaced) {
        // Only the owner of the old file, or root, may hand it on; others keep what they made.
        if (fchown(descriptor, replaced->st_uid, replaced->st_gid) != 0) errno = 0;
        fchmod(descriptor, replaced->st_mode & 0777);
    } else {
        const mode_t mask = umask(0);
        umask(mask);
        fchmod(descriptor, 0666 & ~mask);
    }
}

} // namespace

atomic_file::atomic_file(const std::string& path) {
    try {
        error_ = open(path);
    } catch (const std::system_error& failure) {
        error_ = failure.code().value();
    }
}

atomic_file::~atomic_file() {
    close();
    if (!temporary_.empty()) unlink(temporary_.c_str());
    if (signals_wait_) pthread_sigmask(SIG_SETMASK, &former_signals_, nullptr);
}

int atomic_file::open(const std::string& path) {
    struct stat found = {};
    const bool exists = stat(path.c_str(), &found) == 0;
    if (!exists && errno != ENOENT) return errno;
    if (exists && !S_ISREG(found.st_mode)) {
        const int descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
        return descriptor < 0 ? errno : adopt(descriptor);
    }
    // The rename asks for no permission on the file itself, its owner's wish counts all the same.
    if (exists && access(path.c_str(), W_OK) != 0) return errno;
    target_ = end_of_links(path).string();
    return open_temporary(exists ? &found : nullptr);
}

int atomic_file::open_temporary(const struct stat* replaced) {
    sigset_t deadly;
    sigemptyset(&deadly);
    for (const int signal_number : {SIGHUP, SIGINT, SIGTERM})
        sigaddset(&deadly, signal_number);
    signals_wait_ = pthread_sigmask(SIG_BLOCK, &deadly, &former_signals_) == 0;

    std::string name = (fs::path(target_).parent_path() / ".zelvo-XXXXXX").string();
    const int descriptor = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0) return errno;
    temporary_ = name;
    set_permissions(descriptor, replaced);
    return adopt(descriptor);
}

int atomic_file::adopt(int descriptor) {
    stream_ = fdopen(descriptor, "wb");
    if (stream_) return 0;
    const int reason = errno;
    ::close(descriptor);
    return reason;
}

bool atomic_file::close() {
    if (!stream_) return true;
    const auto failed = [this] { error_ = error_ != 0 ? error_ : errno != 0 ? errno : EIO; };
    if (std::ferror(stream_)) failed();
    if (std::fflush(stream_) != 0) failed();
    if (!temporary_.empty() && fsync(fileno(stream_)) != 0) failed();
    if (std::fclose(stream_) != 0) failed();
    stream_ = nullptr;
    return error_ == 0;
}

bool atomic_file::commit() {
    if (!stream_ || !close()) return false;
    if (temporary_.empty()) return true;
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) {
        error_ = errno;
        return false;
    }
    temporary_.clear();
    return true;
}
