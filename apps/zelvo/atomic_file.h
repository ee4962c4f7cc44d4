#pragma once

#include <csignal>
#include <cstdio>
#include <string>

/// A file that appears under its name whole or not at all.
///
/// What is written goes to a new file in the folder of the target, which `commit` renames to the
/// target; without `commit` the destructor removes it and a file that was there before stays as it
/// was. A symbolic link is followed, so the link stays and what it names is replaced. A file that
/// is replaced hands its permissions on. A target that is no regular file (a device, a pipe) is
/// written to directly. SIGHUP, SIGINT and SIGTERM wait until the object is gone, so they leave no
/// temporary behind.
class atomic_file {
public:
    explicit atomic_file(const std::string& path);
    ~atomic_file();
    atomic_file(const atomic_file&) = delete;
    atomic_file& operator=(const atomic_file&) = delete;

    /// Where to write to; nullptr when the file could not be opened.
    std::FILE* stream() const { return stream_; }
    /// Why the file could not be opened or committed, as an errno value; 0 when nothing failed.
    int error() const { return error_; }
    /// Gives the target what was written. False, with the target as it was, when that fails or a
    /// write before has failed; errno is then taken for the reason of that write, so nothing should
    /// come between.
    bool commit();

private:
    int open(const std::string& path);
    int open_temporary(const struct stat* replaced);
    int adopt(int descriptor);
    bool close();

    std::string target_;
    std::string temporary_; // empty: the target is written to directly
    std::FILE* stream_ = nullptr;
    int error_ = 0;
    bool signals_wait_ = false;
    sigset_t former_signals_ = {};
};
