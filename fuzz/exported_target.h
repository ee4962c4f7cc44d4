#pragma once

#include <iterator>
#include <map>

#include <dlfcn.h>

#include "arguments.h"

/// A target that calls the functions of some headers, one an input, with arguments made of the
/// bytes: the sources that include this say what else holds after a call. KVX_ZELVO_CALLS names the
/// calls.
namespace kvx::zelvo::fuzzing {

/// Demands what is particular to a function, given the arguments before and after a call of it.
void examine_call(const std::string& function, const arguments& before, arguments& after,
                  std::int64_t result);

#define ARGUMENT(name, ...) pass<__VA_ARGS__>(name)
#define CALL(number, form, dimension, ...)                                                         \
    std::int64_t call_##number() {                                                                 \
        return static_cast<std::int64_t>(__VA_ARGS__);                                             \
    }
#define NO_RESULT(number, form, dimension, ...)                                                    \
    std::int64_t call_##number() {                                                                 \
        static_cast<void>(__VA_ARGS__);                                                            \
        return 0;                                                                                  \
    }
/// Files that are open now: writers may leave some so.
inline std::vector<std::FILE*> open_files;

struct calling : arguments {
    using arguments::arguments;
#include KVX_ZELVO_CALLS
};
#undef CALL
#undef NO_RESULT

struct exported_call {
    std::string form;
    std::int64_t (calling::*make)();
};
#define CALL(number, form, dimension, ...) {form, &calling::call_##number},
#define NO_RESULT CALL
inline const exported_call calls[] = {
#include KVX_ZELVO_CALLS
};

inline const std::map<std::string, std::string> documented_codes = {
#include "documented_codes.inc"
};

inline bool documented(const std::string& form, std::int64_t result) {
    const auto codes = documented_codes.find(form);
    if (codes == documented_codes.end()) return true; // no result
    const auto has = [&](const std::string& code) {
        return (" " + codes->second).find(" " + code + " ") != std::string::npos;
    };
    return has(std::to_string(result)) || (result == no_node && has("no_node")) ||
           (result > 0 && result < no_node && has("n")) || (result == 0 && has("false")) ||
           (result == 1 && has("true")) || (form.find("find_closest") != std::string::npos);
}

/// Whether a result may be large: it has an entry for every number up to an index, or many copies.
inline bool asks_for_much(const std::string& form) {
    return form.starts_with("get_ancestors") || form.starts_with("get_connected_elements") ||
           form.starts_with("get_node_graph") || form.find("n_copies") != std::string::npos ||
           form.starts_with("NASTRAN_input");
}

/// Closes what a writer left open on purpose.
inline void close_files() {
    for (std::FILE* const file : std::exchange(open_files, {}))
        std::fclose(file);
}

/// Calls a function; with its result comes the text that it wrote.
inline std::pair<std::int64_t, std::string> result_of(const exported_call& call,
                                                      calling& arguments) {
    if (arguments.takes("stream")) arguments.stream = std::fopen(output_file.path(), "wb");
    const std::int64_t result = (arguments.*call.make)();
    if (arguments.stream) std::fclose(arguments.stream);
    demand(documented(call.form, result), "the code is a documented one");
    demand(result != -199 || asks_for_much(call.form), "memory is lacking for large results only");
    demand(open_files.empty() || result < -1, "only rejected calls leave a file open");
    close_files();
    return {result, output_file.text()};
}

template <class Array>
void compare(calling& own, calling& viewing, calling& before) {
    const auto arrays = own.arrays<Array>(), viewed = viewing.arrays<Array>(),
               earlier = before.arrays<Array>();
    for (std::size_t i = 0; i < arrays.size(); ++i) {
        demand(equal(*arrays[i], *viewed[i]), "views get the same entries");
        demand(own.changeable(arrays[i]) || equal(*arrays[i], *earlier[i]),
               "inputs stay as they were");
    }
}

/// Three times the same arguments: for views and for arrays of their own the call has to do the
/// same.
inline void examine(const exported_call& call, byte_source source, byte_source compact) {
    calling before(compact, call.form), own(compact, call.form), viewing(source, call.form);
    output_file.fill(nullptr, 0);
    const auto result = result_of(call, own);
    output_file.fill(nullptr, 0);
    demand(result == result_of(call, viewing), "views give the same result");
    compare<dense1D<int>>(own, viewing, before);
    compare<dense1D<double>>(own, viewing, before);
    compare<dense2D<double>>(own, viewing, before);
    compare<dense1D<unsigned int>>(own, viewing, before);
    compare<dense2D<unsigned int>>(own, viewing, before);
    demand(own.statistics.text() == viewing.statistics.text(), "views give the same statistics");
    demand(viewing.frames_are_whole(), "nothing is written beyond a view");
    examine_call(call.form.substr(0, call.form.find('(')), before, own, result.first);
}

/// Arguments that share storage with each other: whatever comes of it, nothing breaks.
inline void examine_aliases(const exported_call& call, byte_source source) {
    calling aliasing(std::move(source), call.form);
    aliasing.alias();
    output_file.fill(nullptr, 0);
    result_of(call, aliasing);
    demand(aliasing.frames_are_whole(), "nothing is written beyond a view");
}

} // namespace kvx::zelvo::fuzzing

// Blocks begin one byte behind a multiple of 16, so that there is no room behind the elements and an
// index one too large is seen. What the address sanitizer would refuse is refused without it too.
std::byte* kvx::__vector_num_alloc(std::uint64_t bytes) noexcept {
    if (bytes > kvx::zelvo::fuzzing::largest_block) return nullptr;
    auto* const block = static_cast<std::byte*>(std::malloc(bytes + 1));
    return block ? block + 1 : nullptr;
}
std::byte* kvx::__vector_num_alloc_zeros(std::uint64_t bytes) noexcept {
    if (bytes > kvx::zelvo::fuzzing::largest_block) return nullptr;
    auto* const block = static_cast<std::byte*>(std::calloc(bytes + 1, 1));
    return block ? block + 1 : nullptr;
}
void kvx::__vector_num_free(std::byte* raw_block) noexcept {
    std::free(raw_block ? raw_block - 1 : nullptr);
}

extern "C" std::FILE* fopen(const char* name, const char* mode) {
    static const auto next = reinterpret_cast<decltype(&std::fopen)>(dlsym(RTLD_NEXT, "fopen"));
    std::FILE* const file = next(name, mode);
    if (file) kvx::zelvo::fuzzing::open_files.push_back(file);
    return file;
}
extern "C" int fclose(std::FILE* file) {
    static const auto next = reinterpret_cast<decltype(&std::fclose)>(dlsym(RTLD_NEXT, "fclose"));
    std::erase(kvx::zelvo::fuzzing::open_files, file);
    return next(file);
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kvx::zelvo::fuzzing;
    byte_source source(data, size);
    const auto& call = calls[source.take<std::uint16_t>() % std::size(calls)];
    const bool aliased = source.one_in(8);
    if (aliased)
        examine_aliases(call, source);
    else
        examine(call, source, source.without_views());
    return 0;
}
