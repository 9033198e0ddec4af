#pragma once
// The last guard of the beam. Some ways out of the process still run code without passing the
// console's own end: exit() called by a library, the window system's library ending the
// program when the display connection breaks, std::terminate. On each of them the relay is
// opened first, if a close was commanded. Nothing else is done there: the gating library may
// be called, nothing more is safe that late. SIGKILL runs no code at all; the gating system's
// own time-out covers it.
namespace zel {

class Form1;

class RelayGuard {
  public:
    explicit RelayGuard(Form1& form);
    // The form is going: from here on the console's own end has opened the relay.
    ~RelayGuard();
    RelayGuard(const RelayGuard&) = delete;
    RelayGuard& operator=(const RelayGuard&) = delete;
};

// What the guard does on the way out; for tests.
void open_relay_on_the_way_out();

}  // namespace zel
