#include "language/messages.h"

#include <array>

#include "app/zel_error.h"
#include "language/builtin_messages.h"

namespace zel {

namespace {

constexpr int slot_count = number_of_definitions + 1 + number_of_added_messages;

// Slots 0 to 254 hold messages 101 to 355; slot 255 stays empty; the added messages follow.
std::array<QString, slot_count>& catalogue_slots() {
    static std::array<QString, slot_count> catalogue;
    return catalogue;
}

void check_slot(int slot, int id) {
    if (slot < 0 || slot >= slot_count)
        throw ZelError(err_subscript, QStringLiteral("message_text"),
                       QStringLiteral("Subscript out of range: message %1").arg(id));
}

}  // namespace

QString message_text(int id) {
    check_slot(id - LangOffset, id);
    return catalogue_slots()[static_cast<size_t>(id - LangOffset)];
}

QString builtin_message_text(int id) {
    for (int k = 0; k < builtin_message_count; ++k)
        if (builtin_messages[k].number == id) return QString::fromLatin1(builtin_messages[k].text);
    return {};
}

void clear_messages() {
    for (auto& text : catalogue_slots()) text.clear();
    for (int id = first_added_message; id < first_added_message + number_of_added_messages; ++id)
        catalogue_slots()[static_cast<size_t>(id - LangOffset)] = builtin_message_text(id);
}

void load_default_messages() {
    clear_messages();
    for (int slot = 0; slot < number_of_definitions; ++slot)
        catalogue_slots()[static_cast<size_t>(slot)] = builtin_message_text(slot + LangOffset);
}

void set_message_slot(int slot, const QString& text) {
    check_slot(slot, slot + LangOffset);
    catalogue_slots()[static_cast<size_t>(slot)] = text;
}

}  // namespace zel
