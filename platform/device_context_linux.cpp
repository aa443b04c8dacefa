/// \file
/// There is no device context.
#include "platform/device_context.h"

namespace zepbmp {

int32_t set_bits_to_device(void*, const DeviceRect&, int32_t, int32_t, const Bitmap&, const DibHeader*) { return 0; }

}  // namespace zepbmp
