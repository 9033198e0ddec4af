#include "ui/images.h"

#include <QtGlobal>

// Q_INIT_RESOURCE must be used outside any namespace.
static void init_images_resource() { Q_INIT_RESOURCE(images); }

namespace zel {

void init_images() { init_images_resource(); }

}  // namespace zel
