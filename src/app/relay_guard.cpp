#include "app/relay_guard.h"

#include <atomic>
#include <cstdlib>
#include <exception>

#include "app/form1.h"

namespace zel {

namespace {

std::atomic<Form1*> guarded{nullptr};
std::terminate_handler previous_terminate = nullptr;

extern "C" void open_relay_at_exit() { open_relay_on_the_way_out(); }

[[noreturn]] void open_relay_then_terminate() {
    open_relay_on_the_way_out();
    if (previous_terminate) previous_terminate();
    std::abort();
}

}  // namespace

void open_relay_on_the_way_out() {
    Form1* form = guarded.exchange(nullptr);
    if (!form || !form->relay_close_commanded) return;
    try {
        form->platform.tarrow.SetRelayState(0);
        form->relay_close_commanded = false;
    } catch (...) {
    }
}

RelayGuard::RelayGuard(Form1& form) {
    static const bool registered = [] {
        std::atexit(open_relay_at_exit);
        previous_terminate = std::set_terminate(open_relay_then_terminate);
        return true;
    }();
    (void)registered;
    guarded = &form;
}

RelayGuard::~RelayGuard() { guarded = nullptr; }

}  // namespace zel
