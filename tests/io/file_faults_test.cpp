#include <cerrno>
#include <fstream>
#include <sstream>
#include <thread>

#include <dlfcn.h>
#include <sys/stat.h>

#include "io/files.h"
#include "meshes.h"

namespace {

/// What happens to the files that are opened while it is `on`.
struct fault {
    bool on = false;
    std::size_t good = SIZE_MAX; ///< bytes that come or go
    int error = 0;               ///< what comes then: an error or, with 0, the end
    std::size_t step = SIZE_MAX; ///< bytes that come at once
    bool buffered = true;
} now;

std::FILE* file_of(void* cookie) {
    return static_cast<std::FILE*>(cookie);
}
ssize_t read_some(void* cookie, char* to, std::size_t n) {
    if (now.good == 0 && now.error != 0) return errno = now.error, -1;
    n = std::fread(to, 1, std::min({n, now.step, now.good}), file_of(cookie));
    now.good -= n;
    return static_cast<ssize_t>(n);
}
ssize_t write_some(void* cookie, const char* from, std::size_t n) {
    n = std::fwrite(from, 1, std::min(n, now.good), file_of(cookie));
    now.good -= n;
    return static_cast<ssize_t>(n);
}

} // namespace

/// The library opens its files by this.
extern "C" std::FILE* fopen(const char* name, const char* mode) {
    static const auto open = reinterpret_cast<decltype(&fopen)>(dlsym(RTLD_NEXT, "fopen"));
    std::FILE* const file = open(name, mode);
    if (!file || !now.on) return file;
    const auto close_it = [](void* cookie) { return std::fclose(file_of(cookie)); };
    std::FILE* const spoiled = fopencookie(file, mode, {read_some, write_some, nullptr, close_it});
    if (!now.buffered) std::setvbuf(spoiled, nullptr, _IONBF, 0);
    return spoiled;
}

namespace kvx::zelvo::tests {
namespace {

template <class Call>
auto with(fault f, Call&& call) {
    f.on = true;
    now = f;
    const auto result = call();
    now = {};
    return result;
}

/// What the readers fill; full before.
struct outputs {
    dense2D<double> x{2, 5}, normals{1, 1}, texcoords{1, 1};
    dense2D<unsigned int> m{7, 1}, m2{7, 1};
    dense1D<unsigned int> offsets{3}, props{3};
    dense1D<int> FEs{3};
};
constexpr int (*readers[])(const char*, outputs&) = {
    [](auto f, auto& o) { return STL_input(f, o.x, o.m, false); },
    [](auto f, auto& o) { return STL_input(f, o.x, o.m, true); },
    [](auto f, auto& o) { return NASTRAN_input(f, o.x, o.m, o.offsets, o.FEs, o.props); },
    [](auto f, auto& o) { return FEMAP_input(f, o.x, o.m, o.offsets, o.FEs, o.props); },
    [](auto f, auto& o) { return WavefrontOBJ_input(f, o.x, o.normals, o.texcoords, o.m, o.m2); },
};

/// What a reader answers and leaves behind, as text.
std::string read(std::size_t reader, const char* file) {
    outputs o;
    const int code = readers[reader](file, o);
    return testing::PrintToString(std::tuple(code, list(o.x), list(o.normals), list(o.texcoords),
                                             list(o.m), list(o.m2), list(o.offsets), list(o.props),
                                             list(o.FEs)));
}

const dense2D<double> square = points({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}});
const dense2D<unsigned int> m = columns({{0, 1, 2}, {2, 1, 3}});
const dense1D<int> FEs(2, ET_TRIA3);
const dense1D<unsigned int> ends = vec({0, 1, 2}), props = vec({3, 4});

/// Every reader finds something in its file.
std::string content_for(std::size_t reader) {
    const scratch_file facets;
    EXPECT_EQ(STL_output(facets, square, m, false), 0);
    std::ostringstream text;
    text << std::ifstream(KVX_ZELVO_SOURCE "/tests/data/mesh_in_every_format.txt").rdbuf();
    return reader == 0 ? facets.content() : text.str() + "f 1/1 2//1 3/1/1\n";
}

TEST(FileFaults, ReadersTellAFileThatCannotBeReadFromOneThatEnds) {
    for (std::size_t r = 0; r < std::size(readers); ++r) {
        const std::string content = content_for(r), nothing = read(r, "/nowhere/file");
        const scratch_file file(content), pipe;
        const auto before = open_descriptors();
        const std::string whole = read(r, file);
        EXPECT_NE(whole, read(r, scratch_file()));
        for (const char* name : no_files)
            EXPECT_EQ(read(r, name), nothing) << r;
        std::string returns;
        for (const char c : content)
            returns += c == '\n' && r > 0 ? "\r\n" : std::string(1, c);
        EXPECT_EQ(read(r, scratch_file(returns)), whole) << r;
        for (std::size_t n = 0; n < content.size(); ++n) {
            const std::string cut = read(r, scratch_file(content.substr(0, n)));
            EXPECT_EQ(with({.good = n, .step = 7}, [&] { return read(r, file); }), cut) << r;
            EXPECT_EQ(with({.good = n, .error = EIO}, [&] { return read(r, file); }), nothing)
                << "reader " << r << " at byte " << n;
        }
        std::filesystem::remove(static_cast<const char*>(pipe));
        ASSERT_EQ(mkfifo(pipe, 0600), 0);
        EXPECT_EQ(STL_detect(pipe), STL_format::unreadable) << "and does not wait for a writer";
        std::thread writer([&] { std::ofstream(pipe) << content; });
        EXPECT_EQ(read(r, pipe), whole) << r;
        writer.join();
        EXPECT_EQ(open_descriptors(), before);
        chmod(file, 0);
        EXPECT_EQ(read(r, file), getuid() == 0 ? whole : nothing) << r;
    }
}

struct writer {
    int untold;          ///< code when the file does not take everything
    long left_open;      ///< by a rejected call
    const char* content; ///< of a file that a rejected call was for; null where none is rejected
    int (*write)(const char* file, const dense2D<double>& x);
};
constexpr writer writers[] = {
    {-1, 1, "", [](auto f, auto& x) { return STL_output(f, x, m, true); }},
    {-1, 1, "", [](auto f, auto& x) { return STL_output(f, x, m, false); }},
    {-1, 0, "", [](auto f, auto& x) { return WavefrontOBJ_output(f, x, x, {}, m, {}); }},
    {-1, 0, "", [](auto f, auto& x) { return FEMAP_output(f, x, m, ends, FEs, props); }},
    {0, 0, "", [](auto f, auto& x) { return NASTRAN_output(f, x, m, ends, FEs, props); }},
    {0, 1, "", [](auto f, auto& x) { return vtk_output(f, x, m, m, ET_TRIA3, ET_FACE_MIX); }},
    {0, 0, "old", [](auto f, auto& x) { return medit_output(f, x, m, m, ET_TRIA3, ET_FACE_MIX); }},
    {0, 0, "old", [](auto f, auto& x) { return medit_output(f, x, m, ET_TRIA3, props); }},
    {0, 1, "", [](auto f, auto& x) { return ensight_output(f, x, m, m, ET_TRIA3, ET_TRIA3); }},
    {0, 1, "", [](auto f, auto& x) { return medit_tensor(f, x); }},
    {0, 0, nullptr, [](auto f, auto& x) { return medit_scalar(f, 3, x.as_vector()); }},
    {0, 0, nullptr, [](auto f, auto& x) { return medit_vector(f, 3, x); }},
};

TEST(FileFaults, WritersTellWhereTheyPromiseToAndLeaveOpenWhatTheyAlwaysDid) {
    for (const auto& [untold, left_open, left, write] : writers) {
        SCOPED_TRACE(&write - &writers->write);
        const scratch_file good, bad("old");
        const auto before = open_descriptors();
        EXPECT_TRUE(!left || (write(bad, dense2D<double>(4, 4)) == -2 && bad.content() == left));
        for (const char* name : {static_cast<const char*>(nullptr), "/nowhere/file", "/tmp"})
            EXPECT_EQ(write(name, square), -1);
        EXPECT_EQ(write("/dev/full", square), untold);
        EXPECT_EQ(write(good, square), 0);
        const std::string content = good.content();
        for (std::size_t n = 0; n < 2 * content.size(); ++n) {
            const scratch_file part; // truncating one that holds something waits for the disk
            const fault full{.good = n / 2, .buffered = n % 2 == 0};
            EXPECT_EQ(with(full, [&, &write = write] { return write(part, square); }), untold);
            EXPECT_EQ(part.content(), content.substr(0, n / 2));
        }
        EXPECT_EQ(open_descriptors(), before + left_open);
    }
}

} // namespace
} // namespace kvx::zelvo::tests
