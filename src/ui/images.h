#pragma once
// The console's pictures live in a resource file of the static library zelqt; the linker drops
// them unless the program asks for them, so the program and the tests call this once at start.
// They are then at ":/images/<name>", for example ":/images/gating_ready".

namespace zel {

void init_images();

}  // namespace zel
