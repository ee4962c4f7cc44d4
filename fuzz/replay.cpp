#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::size_t inputs = 0;

void try_input(const std::string& bytes) {
    ++inputs;
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

/// Tries every beginning of a file, and other words in place of each of its words: what a fuzzer
/// takes long to come by. Those of a megabyte take time, so they stand here and there.
void spoil(const std::string& bytes) {
    const std::string sevens(1000, '7');
    const std::string fillers[] = {"9", " ", "x", std::string(1, '\0'), ",", "\n+", "1 "};
    const std::string words[] = {
        "",           "-1",         "nan",        "1e999",       "4294967294",
        "4294967295", "4294967296", "2147483648", "-2147483649", "9223372036854775808",
        sevens,       "." + sevens, fillers[3],   "\r",          "\xFF\xFF\xFF\xFF"};
    for (std::size_t n = 0; n < bytes.size(); ++n)
        try_input(bytes.substr(0, n));
    std::size_t places = 0;
    for (std::size_t begin = 0, end = 0; begin < bytes.size(); begin = end + 1, ++places) {
        end = std::min(bytes.find_first_of(" ,/\n", begin), bytes.size());
        const auto put = [&](const std::string& word) {
            try_input(std::string(bytes).replace(begin, end - begin, word));
        };
        std::for_each(std::begin(words), std::end(words), put);
        if (places % 20 != 0) continue;
        std::string longest;
        while (longest.size() < 1 << 20)
            longest += fillers[places / 20 % std::size(fillers)];
        put(longest);
    }
}

/// Tries bytes of which targets make arguments: calls of all functions, always the same ones.
void draw() {
    std::mt19937 random;
    for (int i = 0; i < 2000; ++i) {
        std::string bytes(random() % 500, 0);
        for (char& byte : bytes)
            byte = static_cast<char>(random());
        try_input(bytes);
    }
}

} // namespace

/// Runs a target on the files of folders, in place of the fuzzer: what it once found stays mended
/// in every build. Usage: replay [--spoil|--draw] FOLDER...
int main(int argc, char** argv) {
    constexpr std::size_t small = 600;
    const std::string how = argc > 1 ? argv[1] : "";
    const bool spoils = how == "--spoil", draws = how == "--draw";
    if (draws) draw();
    for (int i = 1 + spoils + draws; i < argc; ++i) {
        if (!std::filesystem::exists(argv[i])) continue; // nothing was found yet
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(file), {}};
            std::cout << entry.path() << std::endl; // before a crash
            try_input(bytes);
            if (spoils && bytes.size() <= small) spoil(bytes);
        }
    }
    std::cout << inputs << " inputs\n";
    return inputs > 0 ? 0 : 1;
}
