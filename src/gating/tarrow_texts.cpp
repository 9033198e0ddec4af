#include "gating/tarrow_texts.h"

#include <cstring>

#include "language/messages.h"

namespace zel {

QString enable_state_text(char state) {
    switch (state) {
        case 'D': return message_text(121);
        case 'E': return message_text(323);
        case 'F': return message_text(122);
        default: return {};
    }
}

QString relay_state_text(char state) {
    const char letters[] = "OoCcXYU";
    const char* at = state ? std::strchr(letters, state) : nullptr;
    return at ? message_text(326 + static_cast<int>(at - letters)) : QString();
}

QString fixed_text(const char* field, size_t size) {
    return QString::fromLatin1(field, static_cast<qsizetype>(strnlen(field, size)));
}

}  // namespace zel
