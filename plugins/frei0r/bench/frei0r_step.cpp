#include <dlfcn.h>

#include <cinttypes>
#include <cstdlib>

#include "subject.h"

extern "C" {
#include <frei0r.h>
}

namespace zepbmp::bench {

Pixels make_picture(Size size, unsigned seed) {
    const size_t count = static_cast<size_t>(size.width) * static_cast<size_t>(size.height);
    const size_t bytes = (count * 4 + kAlignment - 1) / kAlignment * kAlignment;
    Pixels pixels(static_cast<uint32_t*>(std::aligned_alloc(kAlignment, bytes)), std::free);
    if (!pixels)
        give_up("no memory for a picture");
    uint32_t state = seed * 2654435761u + 1;
    for (size_t i = 0; i < count; ++i) {
        state = state * 1664525u + 1013904223u;
        pixels.get()[i] = (state >> 8) | 0xff000000u;
    }
    return pixels;
}

Step frei0r_step(const std::string& path, Size size, const std::map<std::string, std::vector<double>>& settings,
                 const std::string& progress) {
    void* const file = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!file)
        give_up(dlerror());
    const auto find = [&](auto* function, const char* name) {
        const auto found = reinterpret_cast<decltype(function)>(dlsym(file, name));
        if (!found)
            give_up(path + " has no " + name);
        return found;
    };
    find(&f0r_init, "f0r_init")();
    f0r_plugin_info_t info;
    find(&f0r_get_plugin_info, "f0r_get_plugin_info")(&info);
    const auto set = find(&f0r_set_param_value, "f0r_set_param_value");
    const auto describe = find(&f0r_get_param_info, "f0r_get_param_info");
    const auto index_of = [&](const std::string& name) {
        for (int i = 0; i < info.num_params; ++i) {
            f0r_param_info_t parameter{};
            describe(&parameter, i);
            if (name == parameter.name)
                return i;
        }
        give_up(path + " has no parameter '" + name + "'");
    };
    const f0r_instance_t instance =
        find(&f0r_construct, "f0r_construct")(static_cast<unsigned>(size.width), static_cast<unsigned>(size.height));
    if (!instance)
        give_up(path + " makes no instance");
    for (const auto& [name, values] : settings) {
        if (values.size() == 3) {
            f0r_param_color_t color = {static_cast<float>(values[0]), static_cast<float>(values[1]),
                                       static_cast<float>(values[2])};
            set(instance, &color, index_of(name));
        } else {
            double numbers[2] = {values.at(0), values.back()};
            set(instance, numbers, index_of(name));
        }
    }
    const int progress_index = progress.empty() ? -1 : index_of(progress);
    std::vector<Pixels> first, second;
    for (unsigned i = 0; i < kPictures; ++i) {
        first.push_back(make_picture(size, 2 * i));
        second.push_back(make_picture(size, 2 * i + 1));
    }
    const auto advance = [=](int index, int count) {
        double value = (index + 0.5) / count;
        if (progress_index >= 0)
            set(instance, &value, progress_index);
    };
    const Pixels out = make_picture(size, 99);
    if (info.plugin_type == F0R_PLUGIN_TYPE_MIXER2) {
        const auto update = find(&f0r_update2, "f0r_update2");
        return [=](int index, int count) {
            advance(index, count);
            update(instance, index / 25.0, first[index % kPictures].get(), second[index % kPictures].get(), nullptr,
                   out.get());
        };
    }
    const auto update = find(&f0r_update, "f0r_update");
    return [=](int index, int count) {
        advance(index, count);
        update(instance, index / 25.0, first[index % kPictures].get(), out.get());
    };
}

}  // namespace zepbmp::bench
