#pragma once

namespace zel {

struct BuiltinMessage {
    int number;
    const char* text;
};

extern const BuiltinMessage builtin_messages[];
extern const int builtin_message_count;

}  // namespace zel
