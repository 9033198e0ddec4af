#include "command_reader.h"

namespace zelsim {

int parameter_count(char letter) {
    switch (letter) {
        case 'L':
            return 1;
        case 'T':
        case '+':
        case '-':
            return 2;
        default:
            return 0;
    }
}

std::optional<Command> CommandReader::feed(uint8_t byte, double now) {
    if (!pending) {
        pending = Command{static_cast<char>(byte), {}, now};
    } else {
        pending->parameters.push_back(byte);
    }
    if (static_cast<int>(pending->parameters.size()) < parameter_count(pending->letter))
        return std::nullopt;
    pending->time = now;
    std::optional<Command> done = std::move(pending);
    pending.reset();
    return done;
}

}  // namespace zelsim
