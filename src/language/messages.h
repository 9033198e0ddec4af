#pragma once
// The numbered message catalogue: every text the operator reads, by number 101 to 355.
#include <QString>
#include <cstdint>

namespace zel {

constexpr int LangOffset = 101;
constexpr int16_t number_of_definitions = 255;

// The text of message `id`. 356 gives the empty last slot; any other number outside
// 101..356 is a programming error and fails with a bounds error.
QString message_text(int id);

// Fills the catalogue from the built-in English table.
void load_default_messages();

// For a language file: sizes the catalogue afresh (all slots empty) and fills one slot.
void clear_messages();
void set_message_slot(int slot, const QString& text);

// The built-in English text of a message, whatever the catalogue holds.
QString builtin_message_text(int id);

}  // namespace zel
