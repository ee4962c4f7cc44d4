#include <cstdio>

#include <kvx/zelvo/zelvo.h>

int main() {
    kvx::dense1D<unsigned int> nodes(3, 7);
    nodes[1] = 4;
    std::printf("%s %u\n", kvx::zelvo::version(), kvx::zelvo::max_ID(nodes));
}
