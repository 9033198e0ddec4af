#pragma once
// Key combinations that would switch the operator away from the console during treatment.
#include <cstdint>

namespace zel {

constexpr uint32_t vk_tab = 0x09;
constexpr uint32_t vk_escape = 0x1B;
constexpr uint32_t vk_left_windows = 0x5B;
constexpr uint32_t vk_right_windows = 0x5C;

// True when the key event (down or up) must be swallowed: Alt+Tab, Alt+Esc, Ctrl+Esc and
// the left Windows key. The right Windows key passes.
constexpr bool swallow_key(uint32_t virtual_key, bool alt_down, bool ctrl_down) {
    if ((virtual_key == vk_tab || virtual_key == vk_escape) && alt_down) return true;
    if (virtual_key == vk_escape && ctrl_down) return true;
    return virtual_key == vk_left_windows;
}

}  // namespace zel
