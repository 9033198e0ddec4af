#pragma once
// A pseudo-terminal whose far end the console opens as a serial port, linked under a name in
// the console's folder of ports.
#include <cstdint>
#include <string>
#include <vector>

namespace zelsim {

class PtyPort {
  public:
    PtyPort() = default;
    ~PtyPort();
    PtyPort(const PtyPort&) = delete;
    PtyPort& operator=(const PtyPort&) = delete;

    // Opens the pair; the far end is held open in raw mode, so that the line stays up while
    // no console has it open. Gives an error text, or "" when it worked.
    std::string open();
    // Links the far end as link_path, replacing a link left by an earlier run.
    std::string link_as(const std::string& link_path);
    // Removes the link and closes the pair.
    void close();

    int fd() const { return master; }
    const std::string& device() const { return far_end; }

    std::vector<uint8_t> read_available();
    // What the console's side cannot take at once is lost, as on a real line.
    void write(const std::vector<uint8_t>& bytes);

  private:
    int master = -1;
    int held_far_end = -1;
    std::string far_end;
    std::string link;
};

}  // namespace zelsim
