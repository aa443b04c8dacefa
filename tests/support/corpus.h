/// \file
/// A fixed set of calls whose bytes are the same on every target, at every width.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zepbmp::test {

struct Digest {
    std::string group;
    uint64_t hash;
};

/// Runs the corpus. Composition's groups carry the name of the arithmetic in force: "plain" at level 0, else "vector".
std::vector<Digest> digest_corpus(bool plain);

/// As digests.txt has it: one line a group, name and hexadecimal hash.
std::string to_line(const Digest& digest);

}  // namespace zepbmp::test
