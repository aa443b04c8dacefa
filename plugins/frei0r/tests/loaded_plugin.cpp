#include "loaded_plugin.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

namespace zepbmp::test {

namespace {

[[noreturn]] void give_up(const std::string& what) {
    std::fprintf(stderr, "error: %s\n", what.c_str());
    std::exit(1);
}

template <class Function>
void find(void* file, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(file, name));
    if (!function)
        give_up(std::string("no symbol ") + name);
}

}  // namespace

LoadedPlugin::LoadedPlugin(const std::string& effect) {
    const std::string path = std::string(ZEPBMP_FREI0R_DIR) + "/zepbmp_" + effect + ".so";
    file_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!file_)
        give_up(dlerror());
    find(file_, "f0r_init", init);
    find(file_, "f0r_deinit", deinit);
    find(file_, "f0r_get_plugin_info", get_plugin_info);
    find(file_, "f0r_get_param_info", get_param_info);
    find(file_, "f0r_construct", construct);
    find(file_, "f0r_destruct", destruct);
    find(file_, "f0r_set_param_value", set);
    find(file_, "f0r_get_param_value", get);
    find(file_, "f0r_update", update);
    find(file_, "f0r_update2", update2);
    if (init() != 1)
        give_up(effect + " does not begin");
    get_plugin_info(&info);
    for (int i = 0; i < info.num_params; ++i) {
        f0r_param_info_t parameter{};
        get_param_info(&parameter, i);
        if (!parameter.name || !parameter.explanation)
            give_up(effect + ": a parameter without a name or an explanation");
        parameters.push_back({parameter.name, parameter.explanation, parameter.type});
        indices_[parameter.name] = i;
    }
}

LoadedPlugin::~LoadedPlugin() {
    deinit();
    dlclose(file_);
}

Instance::Instance(const LoadedPlugin& plugin, int width, int height)
    : plugin_(plugin), instance_(plugin.construct(static_cast<unsigned>(width), static_cast<unsigned>(height))) {
    if (!instance_)
        give_up("no instance");
}

Instance::~Instance() { plugin_.destruct(instance_); }

void Instance::set(const std::string& name, double value) { plugin_.set(instance_, &value, plugin_.index(name)); }

void Instance::set(const std::string& name, double x, double y) {
    f0r_param_position_t position = {x, y};
    plugin_.set(instance_, &position, plugin_.index(name));
}

void Instance::set(const std::string& name, float red, float green, float blue) {
    f0r_param_color_t color = {red, green, blue};
    plugin_.set(instance_, &color, plugin_.index(name));
}

void Instance::update(const uint32_t* first, const uint32_t* second, uint32_t* out, double time) const {
    if (plugin_.is_mixer())
        plugin_.update2(instance_, time, first, second, nullptr, out);
    else
        plugin_.update(instance_, time, first, out);
}

}  // namespace zepbmp::test
