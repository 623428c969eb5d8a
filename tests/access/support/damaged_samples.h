// tests/access/support/damaged_samples.h - real files with bits turned and ends cut off.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "tests/access/support/store_testing.h"

namespace velnor::store_testing {

struct Sample {
    std::string name;
    Bytes bytes;
};

/// The real files of a folder of the corpus that `wanted(path)` takes; none when it is not here.
template <class Wanted> std::vector<Sample> samplesOf(const char* folder, Wanted wanted)
{
    namespace fs = std::filesystem;
    std::vector<Sample> found;
    const char* corpus = std::getenv("VELNOR_CORPUS");
    if (!corpus || !fs::is_directory(fs::path(corpus) / folder))
        return found;
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(corpus) / folder)) {
        if (!entry.is_regular_file() || !wanted(entry.path()))
            continue;
        std::ifstream in(entry.path(), std::ios::binary);
        found.push_back({entry.path(), Bytes{std::istreambuf_iterator<char>(in), {}}});
    }
    return found;
}

/// Each sample `times` with one to eight bits turned, every other one within its first `headBytes`.
template <class Use> void useWithTurnedBits(const std::vector<Sample>& samples, int times,
                                            std::size_t headBytes, Use use)
{
    std::mt19937 random(3);
    for (const Sample& sample : samples)
        for (int i = 0; i < times; ++i) {
            Bytes bytes = sample.bytes;
            for (int bits = 1 + i % 8; bits > 0; --bits) {
                const std::size_t reach = bits % 2 ? bytes.size() : headBytes;
                bytes[random() % std::min(reach, bytes.size())] ^=
                    static_cast<std::uint8_t>(1u << random() % 8);
            }
            use(bytes);
        }
}

/// Each sample `times` with its end cut off somewhere.
template <class Use> void useCutOff(const std::vector<Sample>& samples, int times, Use use)
{
    std::mt19937 random(7);
    for (const Sample& sample : samples)
        for (int i = 0; i < times; ++i) {
            Bytes bytes = sample.bytes;
            bytes.resize(random() % bytes.size());
            use(bytes);
        }
}

}  // namespace velnor::store_testing
