// Makes a video for tests of scripts:  make_footage FILE FRAMES SEED
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "footage.h"

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: make_footage FILE FRAMES SEED\n", stderr);
        return 2;
    }
    av_log_set_level(AV_LOG_QUIET);
    try {
        zepbmp::transition::Footage footage;
        footage.frames = std::atoi(argv[2]);
        footage.seed = std::atoi(argv[3]);
        footage.fields = zepbmp::transition::FieldOrder::kTopFirst;
        footage.codec_options = "g=12,bf=2";
        footage.sound_codec = "aac";
        zepbmp::transition::write_footage(argv[1], footage);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_footage: %s\n", error.what());
        return 1;
    }
    return 0;
}
