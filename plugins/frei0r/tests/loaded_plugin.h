/// \file
/// A plug-in file as a host has it: opened by its path, parameters found by their names.
#pragma once

#include <cinttypes>
#include <map>
#include <string>
#include <vector>

extern "C" {
#include <frei0r.h>
}

namespace zepbmp::test {

struct ParameterInfo {
    std::string name;
    std::string explanation;
    int type;
};

class LoadedPlugin {
public:
    /// `effect`: "wipe" of zepbmp_wipe.so. Ends the program where the file cannot be used.
    explicit LoadedPlugin(const std::string& effect);
    ~LoadedPlugin();
    LoadedPlugin(const LoadedPlugin&) = delete;
    LoadedPlugin& operator=(const LoadedPlugin&) = delete;

    bool is_mixer() const { return info.plugin_type == F0R_PLUGIN_TYPE_MIXER2; }
    int index(const std::string& parameter) const { return indices_.at(parameter); }

    decltype(&f0r_init) init;
    decltype(&f0r_deinit) deinit;
    decltype(&f0r_get_plugin_info) get_plugin_info;
    decltype(&f0r_get_param_info) get_param_info;
    decltype(&f0r_construct) construct;
    decltype(&f0r_destruct) destruct;
    decltype(&f0r_set_param_value) set;
    decltype(&f0r_get_param_value) get;
    decltype(&f0r_update) update;
    decltype(&f0r_update2) update2;

    f0r_plugin_info_t info;
    std::vector<ParameterInfo> parameters;

private:
    void* file_;
    std::map<std::string, int> indices_;
};

/// An instance with what hosts do to it.
class Instance {
public:
    Instance(const LoadedPlugin& plugin, int width, int height);
    ~Instance();
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    f0r_instance_t get() const { return instance_; }
    void set(const std::string& name, double value);
    void set(const std::string& name, double x, double y);
    void set(const std::string& name, float red, float green, float blue);
    /// As the type of plug-in wants it: a filter gets the first frame alone.
    void update(const uint32_t* first, const uint32_t* second, uint32_t* out, double time = 0) const;

private:
    const LoadedPlugin& plugin_;
    f0r_instance_t instance_;
};

}  // namespace zepbmp::test
