#include <bit>
#include <cfenv>
#include <clocale>
#include <deque>
#include <fstream>
#include <numeric>
#include <random>
#include <set>
#include <thread>

#include "docs/exported_calls.h"

/// Every exported function under what goes wrong around it: memory that ends, outputs that are
/// inputs, other threads, other locales and rounding modes.
namespace kvx::zelvo::tests {
namespace {

using texts = std::vector<std::string>;

template <class T>
std::string contents(const dense1D<T>& v) {
    return std::to_string(v.size()) +
           std::string(reinterpret_cast<const char*>(v.data()), v.size() * sizeof(T));
}
template <class T>
std::string contents(const dense2D<T>& m) {
    std::string text = std::to_string(m.rows()) + 'x' + std::to_string(m.cols());
    for (std::uint64_t j = 0; j < m.cols() && m.rows() > 0; ++j)
        text += contents(m.col(j));
    return text;
}
std::string contents(const histogram& h) {
    return h.text() + std::to_string(h.count());
}
std::string contents(const node_detector& d) {
    dense1D<unsigned int> nodes;
    d.find_in_box(vector_fixed<double, 3>(-1e9), vector_fixed<double, 3>(1e9), nodes);
    return contents(nodes);
}
std::string contents(const parameter& p) {
    return std::visit(
        [](const auto& x) {
            if constexpr (requires { contents(*x); })
                return contents(*x);
            else
                return std::string(reinterpret_cast<const char*>(x.data()), x.size());
        },
        p.object);
}
texts contents(const parameter_list& list) {
    texts all;
    for (const parameter& p : list)
        all.push_back(contents(p));
    return all;
}

/// Calls visit(array) for an array, and returns its result; false for anything else.
template <class Visit>
bool visit_array(const parameter& p, Visit&& visit) {
    return std::visit(
        [&](auto x) {
            if constexpr (requires { x->copy(*x); })
                return visit(*x);
            else
                return false;
        },
        p.object);
}

/// Repeats an array twenty times, adding so much to its entries each time.
template <class T>
void repeat(dense2D<T>& m, T shift = T{0}) {
    const std::uint64_t n = m.cols();
    m.resize(m.rows(), 20 * n);
    for (std::uint64_t j = n; j < 20 * n; ++j)
        for (std::uint64_t i = 0; i < m.rows(); ++i)
            m(i, j) = m(i, j - n) + shift;
}
template <class T>
void repeat(dense1D<T>& v, T shift = T{0}) {
    const std::uint64_t n = v.size();
    v.resize(20 * n);
    for (std::uint64_t i = n; i < 20 * n; ++i)
        v[i] = v[i - n] + shift;
}

/// Numbers of all digits, which round differently in each mode.
const std::vector<std::string> numbers = [] {
    std::vector<std::string> all;
    std::mt19937_64 bits;
    for (char text[40]; all.size() < 432; all.push_back(text))
        std::snprintf(text, sizeof text, "%.16e", std::bit_cast<double>(bits() & ~(1ull << 62)));
    return all;
}();
/// The numbers in every format that is read.
std::string numbers_in_every_format() {
    std::string facets = "solid\n", grid = "BEGIN BULK\n", femap = "   -1\n   403\n", vertices;
    for (std::size_t i = 0; i + 3 <= numbers.size(); i += 3) {
        const std::string x = numbers[i], y = numbers[i + 1], z = numbers[i + 2];
        const std::string id = std::to_string(i / 3), list = x + ',' + y + ',' + z;
        const std::string words = x + ' ' + y + ' ' + z + '\n';
        facets += "facet normal 0 0 1\nouter loop\nvertex " + words +
                  "vertex 1 0 0\nvertex 0 1 0\n" + "endloop\nendfacet\n";
        grid += "GRID," + id + ",," + list + '\n';
        femap += id + ",0,0,1,46,0,0,0,0,0,0," + list + '\n';
        vertices += "v " + words + "vn " + words + "vt " + x + ' ' + y + "\nf 1 2 3\n";
    }
    const std::string rest = content_of(mesh_file);
    return facets + vertices + grid + "CTRIA3,0,1,0,0,0\nENDDATA\n" + femap + "   -1\n" +
           rest.substr(rest.find("   -1\n   404"));
}

const scratch_file numbers_file(numbers_in_every_format());

using change = void (*)(arguments&);
void keep(arguments&) {}
/// Twenty coincident meshes.
void enlarge(arguments& a) {
    for (auto* const m : {&a.conn, &a.conn2})
        repeat(*m, 8u);
    for (auto* const m : {&a.neighbors, &a.elem_refs})
        repeat(*m);
    for (auto* const v : {&a.nodes, &a.map, &a.perm})
        repeat(*v, 8u);
    for (auto* const v : {&a.refs, &a.props})
        repeat(*v);
    repeat(a.pos);
    repeat(a.sizes);
    repeat(a.metrics);
    a.metrics3d = a.bases = a.V = a.metrics;
    a.fallback_sizes = a.sizes;
    static_cast<dense1D<double>&>(a.fallback) = static_cast<dense1D<double>&>(a.values) = a.sizes;
    static_cast<dense2D<double>&>(a.fallback) = static_cast<dense2D<double>&>(a.M) = a.metrics;
    a.offsets[2] = static_cast<unsigned int>(a.conn.cols());
}
/// The same of a mixed kind.
void mix(arguments& a) {
    enlarge(a);
    for (auto* const m : {&a.conn, &a.conn2, &a.neighbors})
        m->resize(4, m->cols(), none);
    a.kind = a.FE2 = ET_FACE_MIX;
    a.types = a.kind;
}
void number(arguments& a) {
    enlarge(a);
    for (dense1D<double> v : {a.pos.as_vector(), a.metrics.as_vector(), a.sizes})
        for (std::size_t i = 0; i < v.size(); ++i)
            v[i] = std::strtod(numbers[i % numbers.size()].c_str(), nullptr);
}
constexpr change changes_of_arguments[] = {keep, enlarge, mix};

struct outcome {
    std::int64_t result;
    texts after; ///< the parameters
    bool operator==(const outcome&) const = default;
};

/// Arguments of a call, every array in storage of its own.
struct prepared : arguments {
    const call& function;
    parameter_list list;

    explicit prepared(const call& c, change changes = keep)
        : function(c) {
        changes(*this);
        prepare(*this, c);
        if (filename == mesh_file && pos.cols() > 8) filename = numbers_file;
        list = (this->*c.parameters)();
        for (const parameter& p : list)
            visit_array(p, [](auto& array) { return array.copy(array); });
    }
    outcome run() {
        const std::int64_t result = (this->*function.make)();
        return {result, contents(list)};
    }
};

/// Makes a call with memory for so many allocations; false when that is enough.
bool fails(const call& c, change changes, std::int64_t memory, const outcome& expected,
           std::int64_t& result) {
    prepared a(c, changes);
    const texts before = contents(a.list);
    const auto descriptors = open_descriptors();
    refused = false;
    allocations_left = memory;
    result = (a.*c.make)();
    allocations_left = unlimited;
    const texts after = contents(a.list);
    const bool rejected = expected.result == -2 || expected.result == -3; // the file may stay open
    EXPECT_LE(open_descriptors(), descriptors + rejected) << c.form;
    if (!refused || expected == outcome{result, after}) {
        EXPECT_EQ(result, expected.result) << c.form;
        EXPECT_EQ(after, expected.after) << c.form;
        return refused;
    }
    for (std::size_t i = 0; i < after.size(); ++i) {
        EXPECT_TRUE(!a.list[i].constant || after[i] == before[i]) << c.form;
        const auto emptied = [](auto& array) { return array.empty(); };
        const bool is_array = visit_array(a.list[i], [](auto&) { return true; });
        EXPECT_TRUE(!is_array || after[i] == before[i] || visit_array(a.list[i], emptied) ||
                    c.form.starts_with("unique_indices")) // which stop growing
            << c.form;
    }
    EXPECT_TRUE(a.run() == expected || c.form.starts_with("unique_indices")) << c.form;
    return true;
}

TEST(exhausted_memory, is_reported_and_leaves_nothing_behind) {
    std::map<std::string, std::pair<std::int64_t, std::set<std::int64_t>>> failures;
    for (const call& c : calls) {
        for (const change changes : changes_of_arguments) {
            const outcome expected = prepared(c, changes).run();
            for (const bool once : {false, true}) {
                fails_once = once;
                std::int64_t result = 0;
                std::int64_t blocks = live_blocks;
                for (std::int64_t n = 0; fails(c, changes, n, expected, result); ++n) {
                    ASSERT_EQ(live_blocks, blocks) << c.form << ", " << n << " allocations";
                    ++failures[c.form].first;
                    failures[c.form].second.insert(result);
                    blocks = live_blocks;
                }
            }
        }
    }
    fails_once = false;
    if (const char* const name = std::getenv("KVX_ZELVO_MEMORY_TABLE")) {
        std::ofstream table(name);
        table << "| function | allocations failed | results |\n|---|---|---|\n";
        for (const auto& [form, failed] : failures) {
            table << "| `" << form << "` | " << failed.first << " | ";
            for (const std::int64_t result : failed.second)
                table << (result == *failed.second.begin() ? "" : ", ") << result;
            table << " |\n";
        }
    }
}

TEST(exhausted_memory, leaves_arrays_as_they_were) {
    using vector = dense1D<double>;
    using dense = dense2D<double>;
    const std::function<bool(vector&, dense&)> actions[] = {
        [](vector& v, dense&) { return v.resize(99, 7.0); },
        [](vector& v, dense&) { return v.reserve(99, 2); },
        [](vector& v, dense& m) { return v.copy(m.col(0)); },
        [](vector& v, dense&) { return (v = vector(9, 7.0), true); },
        [](vector& v, dense& m) { return (v = vector::wrap(m.data(), 2), true); },
        [](vector&, dense& m) { return m.resize(3, 99, 7.0); },
        [](vector&, dense& m) { return m.resize(9, 3, 7.0); },
        [](vector&, dense& m) { return m.reserve(9, 99); },
        [](vector&, dense& m) { return m.copy(m); },
        [](vector&, dense& m) { return m.make_zeros(9, 9); },
        [](vector&, dense& m) { return (m = dense(9, 9, 7.0), true); },
        [](vector& v, dense& m) { return (m = dense::wrap(v.data(), 1, 2), true); },
        [](vector& v, dense&) { return histogram(histogram(v)).text().size() > 0; }};
    for (const auto& action : actions)
        for (const bool shared : {false, true}) {
            const std::int64_t blocks = live_blocks;
            bool again = true;
            for (std::int64_t memory = 0; again; ++memory) {
                vector v = points({{1, 2, 3}}).col(0);
                dense m = points({{1, 2, 3}, {4, 5, 6}});
                const dense other = shared ? m : dense();
                const texts before = {contents(v), contents(m)};
                refused = false;
                allocations_left = memory;
                try {
                    EXPECT_EQ(action(v, m), !refused);
                } catch (const std::bad_alloc&) {
                }
                allocations_left = unlimited;
                again = refused;
                if (refused) {
                    EXPECT_EQ(before, (texts{contents(v), contents(m)}));
                }
            }
            EXPECT_EQ(live_blocks, blocks);
        }
}

// ---- outputs that are inputs

TEST(outputs, may_be_inputs) {
    for (const call& c : calls)
        for (const change changes : changes_of_arguments) {
            const parameter_list list = prepared(c, changes).list;
            for (std::size_t in = 0; in < list.size(); ++in)
                for (std::size_t out = 0; out < list.size(); ++out)
                    for (const bool view : {false, true}) {
                        if (!list[in].constant || list[out].constant) continue;
                        if (list[in].object.index() != list[out].object.index()) continue;
                        prepared separate(c, changes), a(c, changes);
                        const auto take = [=](prepared& from, auto&& how) {
                            return visit_array(from.list[out], [&](auto& x) {
                                using array = std::remove_reference_t<decltype(x)>;
                                return how(x, *std::get<array*>(from.list[in].object));
                            });
                        };
                        if (!take(separate, [](auto& x, auto& y) { return x.copy(y); })) continue;
                        take(a, [&](auto& x, auto& y) {
                            if (view) return (x = y, true);
                            a.output = &x;
                            a.instead = &y;
                            return true;
                        });
                        outcome expected = separate.run(), actual = a.run();
                        // What lies in one place shows the output.
                        if (!view) actual.after[out] = actual.after[in];
                        if (actual.after[in] == actual.after[out])
                            actual.after[in] = expected.after[in];
                        EXPECT_TRUE(actual == expected) << c.form << ": " << in << " as " << out;
                    }
        }
}

// ---- what goes on around a call

TEST(reentrancy, calls_share_inputs) {
    std::deque<prepared> shared;
    std::vector<outcome> expected;
    for (const call& c : calls) {
        expected.push_back(prepared(c, mix).run());
        shared.emplace_back(c, mix);
    }
    const auto make_all_calls = [&] {
        for (std::size_t i = 0; i < shared.size(); ++i) {
            prepared mine(calls[i], mix);
            for (std::size_t k = 0; k < mine.list.size(); ++k) {
                if (!mine.list[k].constant) continue;
                visit_array(mine.list[k], [&](auto& array) {
                    array = *std::get<std::decay_t<decltype(array)>*>(shared[i].list[k].object);
                    return true;
                });
            }
            EXPECT_TRUE(mine.run() == expected[i]) << calls[i].form;
        }
    };
    std::vector<std::thread> threads(4);
    for (std::thread& thread : threads)
        thread = std::thread(make_all_calls);
    for (std::thread& thread : threads)
        thread.join();
}

TEST(files, know_neither_locale_nor_rounding_mode) {
    const std::filesystem::path comma = std::string(numbers_file) + "_comma";
    const bool has_comma =
        std::system(("localedef -i de_DE -f UTF-8 " + comma.string()).c_str()) == 0;
    setenv("LOCPATH", comma.parent_path().c_str(), 1);
    for (const call& c : calls) {
        if (c.form.find("filename") == c.form.npos && c.form.find("stream") == c.form.npos)
            continue;
        for (const bool ascii : {false, true}) {
            std::vector<std::pair<std::string, outcome>> seen;
            for (const int mode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
                prepared a(c, number);
                const scratch_file target;
                const closing_file stream = target.open("wb");
                a.stream = stream.get();
                a.filename = c.form.find("_input") == c.form.npos ? target : numbers_file;
                a.ascii = ascii;
                const std::string locale = has_comma ? comma.filename().string() : "C";
                EXPECT_TRUE(mode == FE_TONEAREST || std::setlocale(LC_ALL, locale.c_str()));
                std::fesetround(mode);
                const std::int64_t result = (a.*c.make)();
                EXPECT_EQ(std::fegetround(), mode);
                std::fesetround(FE_TONEAREST);
                std::setlocale(LC_ALL, "C");
                seen.push_back({target.content(), {result, contents(a.list)}});
                EXPECT_TRUE(seen.back() == seen.front()) << c.form << " " << mode;
            }
        }
    }
    std::filesystem::remove_all(comma);
    unsetenv("LOCPATH");
    if (!has_comma) GTEST_SKIP() << "not tested with a locale that has a comma";
}

} // namespace
} // namespace kvx::zelvo::tests
