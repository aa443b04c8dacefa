/// \file
/// What is measured: something that makes one frame of two.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace zepbmp::bench {

struct Size {
    int width;
    int height;
};

/// Makes frame `index` of `count` of a transition, or filters frame `index`.
using Step = std::function<void(int index, int count)>;

struct Subject {
    std::string name;
    std::string pixels;  ///< the format that it works in
    Step step;
};

/// Pictures as hosts hand them out: each at a 64-byte boundary, several of each, so that none stays in a cache.
constexpr int kPictures = 4;
constexpr size_t kAlignment = 64;

using Pixels = std::shared_ptr<uint32_t>;
Pixels make_picture(Size size, unsigned seed);

/// A frei0r plug-in by itself. `settings`: numbers by the parameter's name, or places and colours of two and three of
/// them; `progress`: the name of the parameter that goes from 0 to 1, or empty.
Step frei0r_step(const std::string& path, Size size, const std::map<std::string, std::vector<double>>& settings,
                 const std::string& progress);

/// ffmpeg's xfade on one thread, fed with frames and asked for frames.
Step xfade_step(Size size, const std::string& transition);

/// A transition of MLT on frames that are there already, on one thread. `service`, and its properties; `progress`: the
/// name of the property that goes from 0 to 1, or empty where the service takes it from the frame's number.
Step mlt_step(Size size, const std::string& service, const std::map<std::string, std::string>& properties,
              const std::string& progress);

/// Ends the program.
[[noreturn]] void give_up(const std::string& what);

}  // namespace zepbmp::bench
