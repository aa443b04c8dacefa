/* A frei0r filter with the faults that the valgrind check has to find: it reads behind a block, decides by bytes that
 * nobody has written, and loses memory. */
#include <frei0r.h>
#include <stdlib.h>

int f0r_init(void) { return 1; }
void f0r_deinit(void) {}
void f0r_get_plugin_info(f0r_plugin_info_t* info) {
    info->name = "zepbmp faulty";
    info->author = "zepbmp authors";
    info->plugin_type = F0R_PLUGIN_TYPE_FILTER;
    info->color_model = F0R_COLOR_MODEL_RGBA8888;
    info->frei0r_version = FREI0R_MAJOR_VERSION;
    info->major_version = info->minor_version = info->num_params = 0;
    info->explanation = "Does wrong";
}
void f0r_get_param_info(f0r_param_info_t* info, int index) { (void)info, (void)index; }
void f0r_set_param_value(f0r_instance_t instance, f0r_param_t value, int index) {
    (void)instance, (void)value, (void)index;
}
void f0r_get_param_value(f0r_instance_t instance, f0r_param_t value, int index) {
    (void)instance, (void)value, (void)index;
}

f0r_instance_t f0r_construct(unsigned int width, unsigned int height) {
    return malloc(4u * width * height);  // never freed
}
void f0r_destruct(f0r_instance_t instance) { (void)instance; }

static int pixels = 64;

void f0r_update(f0r_instance_t instance, double time, const uint32_t* in, uint32_t* out) {
    const uint32_t* const block = malloc(sizeof(uint32_t) * (size_t)pixels);
    (void)instance, (void)time;
    out[0] = block[pixels] + in[0];
    out[1] = block[1] > 5 ? 1 : 2;
    free((void*)block);
}
