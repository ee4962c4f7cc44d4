#include "named_output.h"

#include <array>
#include <cerrno>
#include <future>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

/// Both ends of a pipe.
class pipe_ends {
public:
    pipe_ends() {
        if (pipe2(ends_.data(), O_CLOEXEC) != 0)
            throw std::system_error(errno, std::generic_category(), "pipe");
    }
    ~pipe_ends() {
        close(ends_[0]);
        close_in();
    }
    pipe_ends(const pipe_ends&) = delete;
    pipe_ends& operator=(const pipe_ends&) = delete;

    int out() const { return ends_[0]; }
    int in() const { return ends_[1]; }
    void close_in() {
        if (ends_[1] >= 0) close(ends_[1]);
        ends_[1] = -1;
    }

private:
    std::array<int, 2> ends_ = {-1, -1};
};

/// Writes what the pipe holds now; nothing any more after the first failure, whose errno is kept.
void move_on(int pipe, std::FILE* target, int& failure) {
    std::array<char, 65536> block; // as much as a pipe holds
    for (ssize_t n; (n = read(pipe, block.data(), block.size())) > 0;) {
        if (failure != 0) continue;
        errno = 0;
        if (std::fwrite(block.data(), 1, static_cast<std::size_t>(n), target) !=
            static_cast<std::size_t>(n))
            failure = errno != 0 ? errno : EIO;
    }
}

} // namespace

int write_by_name(std::FILE* target, const std::function<int(const char*)>& write) {
    // The end of the text does not show in its own pipe, which a writer may leave open.
    pipe_ends text, done;
    fcntl(text.out(), F_SETFL, O_NONBLOCK);
    const std::string name = "/dev/fd/" + std::to_string(text.in());
    std::future<int> result = std::async(std::launch::async, [&] {
        struct closing {
            pipe_ends& pipe;
            ~closing() { pipe.close_in(); }
        } const at_the_end{done};
        return write(name.c_str());
    });

    int failure = 0;
    for (bool finished = false; !finished;) {
        std::array<pollfd, 2> ready = {{{text.out(), POLLIN, 0}, {done.out(), POLLIN, 0}}};
        poll(ready.data(), ready.size(), -1);
        finished = ready[1].revents != 0;
        move_on(text.out(), target, failure);
    }
    errno = failure;
    return result.get();
}
