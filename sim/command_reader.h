#pragma once
// Splits the bytes from the console into commands: a letter and its parameter bytes.
#include <cstdint>
#include <optional>
#include <vector>

namespace zelsim {

struct Command {
    char letter = 0;
    std::vector<uint8_t> parameters;
    double time = 0.0;  // seconds, when its last byte came in
};

// Parameter bytes that follow a command letter: "L" one, "T", "+" and "-" two.
int parameter_count(char letter);

class CommandReader {
  public:
    // Gives a command once its last parameter byte has come.
    std::optional<Command> feed(uint8_t byte, double now);

  private:
    std::optional<Command> pending;
};

}  // namespace zelsim
