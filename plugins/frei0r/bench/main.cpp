/// \file
/// The milliseconds that a frame takes in an effect, ours and others', side by side.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "subject.h"

namespace zepbmp::bench {

[[noreturn]] void give_up(const std::string& what) {
    std::fprintf(stderr, "error: %s\n", what.c_str());
    std::exit(1);
}

namespace {

struct Group {
    std::string title;
    std::vector<Subject> subjects;
};

/// How soon each pixel turns, as MLT's luma wants it: a grey picture, here a circle that opens. The file lasts as long
/// as the object.
class CircleFile {
public:
    explicit CircleFile(Size size) {
        const int descriptor = mkstemps(path_, 4);
        FILE* const file = descriptor < 0 ? nullptr : fdopen(descriptor, "wb");
        if (!file)
            give_up("cannot write a file in /tmp");
        std::fprintf(file, "P5\n%d %d\n65535\n", size.width, size.height);
        const double corner = std::hypot(size.width / 2.0, size.height / 2.0);
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                const double part = std::hypot(x + 0.5 - size.width / 2.0, y + 0.5 - size.height / 2.0) / corner;
                const int grey = static_cast<int>(part * 65535);
                std::fputc(grey >> 8, file);
                std::fputc(grey & 255, file);
            }
        }
        if (std::fclose(file) != 0)
            give_up("cannot write a file in /tmp");
    }
    ~CircleFile() { unlink(path_); }
    CircleFile(const CircleFile&) = delete;
    CircleFile& operator=(const CircleFile&) = delete;

    const char* path() const { return path_; }

private:
    char path_[40] = "/tmp/zepbmp-circle-XXXXXX.pgm";
};

std::vector<Group> groups(Size size, const CircleFile& circle, const std::string& ours, const std::string& stock) {
    using Settings = std::map<std::string, std::vector<double>>;
    const auto our = [&](const std::string& effect, const Settings& settings, const std::string& progress) {
        return frei0r_step(ours + "/zepbmp_" + effect + ".so", size, settings, progress);
    };
    const auto other = [&](const std::string& name, const Settings& settings, const std::string& progress) {
        return frei0r_step(stock + "/" + name + ".so", size, settings, progress);
    };
    const auto in_mlt = [&](const std::string& effect) {
        return mlt_step(size, "frei0r.zepbmp_" + effect, {}, "Progress");
    };
    const auto luma = [&](const std::map<std::string, std::string>& properties) {
        return mlt_step(size, "luma", properties, "");
    };
    const Settings pins = {{"Top left", {0.1, 0.15}},
                           {"Top right", {0.9, 0.05}},
                           {"Bottom right", {0.95, 0.9}},
                           {"Bottom left", {0.05, 0.95}}};
    Settings on_black = pins;
    on_black["Transparent"] = {0};
    const Settings stock_pins = {{"Top Left", {0.1, 0.15}},
                                 {"Top Right", {0.9, 0.05}},
                                 {"Bottom Right", {0.95, 0.9}},
                                 {"Bottom Left", {0.05, 0.95}}};
    // Coordinates of the stock plug-in go from -1 to 2 as 0 to 1; its interpolator 0.16 is bilinear.
    const auto c = [](double value) { return std::vector<double>{(value + 1) / 3}; };
    const Settings corners = {{"Corner 1 X", c(0.1)},  {"Corner 1 Y", c(0.15)}, {"Corner 2 X", c(0.9)},
                              {"Corner 2 Y", c(0.05)}, {"Corner 3 X", c(0.95)}, {"Corner 3 Y", c(0.9)},
                              {"Corner 4 X", c(0.05)}, {"Corner 4 Y", c(0.95)}, {"Interpolator", {0.16}}};
    Settings nearest = corners;
    nearest["Interpolator"] = {0};
    return {
        {"dissolve",
         {{"zepbmp dissolve", "RGBA", our("dissolve", {}, "Progress")},
          {"zepbmp dissolve in MLT", "RGBA", in_mlt("dissolve")},
          {"frei0r xfade0r", "RGBA", other("xfade0r", {}, "fader")},
          {"frei0r blend", "RGBA", other("blend", {}, "blend")},
          {"frei0r composition", "RGBA", other("composition", {}, "")},
          {"ffmpeg xfade=fade", "planar RGBA", xfade_step(size, "fade")},
          {"MLT luma, dissolve", "YUY2", luma({})}}},
        {"wipe",
         {{"zepbmp wipe, circle, soft edge", "RGBA", our("wipe", {}, "Progress")},
          {"zepbmp wipe, circle, sharp edge", "RGBA", our("wipe", {{"Feather", {0}}}, "Progress")},
          {"zepbmp wipe, circle, in MLT", "RGBA", in_mlt("wipe")},
          {"zepbmp wipe, box", "RGBA", our("wipe", {{"Shape", {0.25}}}, "Progress")},
          {"zepbmp wipe, rounded box", "RGBA", our("wipe", {{"Shape", {0.5}}}, "Progress")},
          {"zepbmp wipe, circle with a band", "RGBA", our("wipe", {{"Shape", {0.75}}}, "Progress")},
          {"ffmpeg xfade=circleopen", "planar RGBA", xfade_step(size, "circleopen")},
          {"ffmpeg xfade=circlecrop", "planar RGBA", xfade_step(size, "circlecrop")},
          {"MLT luma, circle, soft edge", "YUY2", luma({{"resource", circle.path()}, {"softness", "0.1"}})}}},
        {"perspective",
         {{"zepbmp corner pin", "RGBA", our("corner_pin", pins, "")},
          {"zepbmp corner pin, on a colour", "RGBA", our("corner_pin", on_black, "")},
          {"zepbmp fly", "RGBA", our("fly", {}, "Progress")},
          {"frei0r perspective, nearest", "RGBA", other("perspective", stock_pins, "")},
          {"frei0r c0rners, nearest", "RGBA", other("c0rners", nearest, "")},
          {"frei0r c0rners, bilinear", "RGBA", other("c0rners", corners, "")}}},
        {"light, fields",
         {{"zepbmp spotlight", "RGBA", our("spotlight", {}, "")},
          {"zepbmp spotlight, moving", "RGBA", our("spotlight", {}, "Centre across")},
          {"frei0r vignette", "RGBA", other("vignette", {}, "")},
          {"zepbmp interpolate", "RGBA", our("interpolate", {}, "")}}},
    };
}

double milliseconds_a_frame(const Subject& subject, int frames) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point begin = Clock::now();
    for (int i = 0; i < frames; ++i)
        subject.step(i, frames);
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count() / frames;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

/// Repetitions go round the whole group, so that what disturbs the machine disturbs all.
void measure(const Group& group, int frames, int repetitions) {
    std::vector<std::vector<double>> times(group.subjects.size());
    for (int k = -1; k < repetitions; ++k) {
        for (size_t i = 0; i < group.subjects.size(); ++i) {
            const double time = milliseconds_a_frame(group.subjects[i], k < 0 ? 2 : frames);
            if (k >= 0)  // the first round warms up
                times[i].push_back(time);
        }
    }
    const double first = median(times[0]);
    std::printf("%-36s %-12s %9s %9s %9s  %s\n", group.title.c_str(), "pixels", "median", "least", "most",
                "of the first");
    for (size_t i = 0; i < times.size(); ++i) {
        const auto [least, most] = std::minmax_element(times[i].begin(), times[i].end());
        std::printf("  %-34s %-12s %6.3f ms %6.3f ms %6.3f ms  %7.2f\n", group.subjects[i].name.c_str(),
                    group.subjects[i].pixels.c_str(), median(times[i]), *least, *most, median(times[i]) / first);
    }
    std::printf("\n");
}

int number(const char* text, const char* what) {
    char* end = nullptr;
    const long value = std::strtol(text, &end, 10);
    if (*end || end == text || value < 1 || value > 100000)
        give_up(std::string(what) + " is no number of 1 to 100000: " + text);
    return static_cast<int>(value);
}

}  // namespace
}  // namespace zepbmp::bench

int main(int count, char** words) {
    using namespace zepbmp::bench;
    if (count != 3 && count != 7)
        give_up("usage: frei0r-bench OUR-PLUGINS STOCK-PLUGINS [WIDTH HEIGHT FRAMES REPETITIONS]");
    const Size size = count == 7 ? Size{number(words[3], "width"), number(words[4], "height")} : Size{1920, 1080};
    const int frames = count == 7 ? number(words[5], "frames") : 50;
    const int repetitions = count == 7 ? number(words[6], "repetitions") : 7;
    setenv("FREI0R_PATH", words[1], 1);
    std::printf("%d x %d pixels; a frame's time in the effect alone, on one thread; %d repetitions of %d frames\n\n",
                size.width, size.height, repetitions, frames);
    const CircleFile circle(size);
    for (const Group& group : groups(size, circle, words[1], words[2]))
        measure(group, frames, repetitions);
}
