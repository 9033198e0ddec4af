#pragma once
// The numbered message catalogue: every text the operator reads, by number 101 to 355, and
// the console's own texts added behind them from 357 on.
#include <QString>
#include <cstdint>

namespace zel {

constexpr int LangOffset = 101;
constexpr int16_t number_of_definitions = 255;
// Texts added to the catalogue, from 357 on: a language file may carry them on lines of its
// own behind the 255; where it doesn't, they stay in English.
constexpr int first_added_message = LangOffset + number_of_definitions + 1;
constexpr int16_t number_of_added_messages = 29;

// The text of message `id`. 356 gives the empty last slot; any other number outside
// 101..356 and the added ones is a programming error and fails with a bounds error.
QString message_text(int id);

// Fills the catalogue from the built-in English table.
void load_default_messages();

// For a language file: sizes the catalogue afresh (the seed's slots empty, the added ones in
// English) and fills one slot.
void clear_messages();
void set_message_slot(int slot, const QString& text);

// The built-in English text of a message, whatever the catalogue holds.
QString builtin_message_text(int id);

}  // namespace zel
