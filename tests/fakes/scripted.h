#pragma once
#include <deque>

namespace zel::test {

// The next scripted answer, or `none` once the script is used up.
template <class T>
T next_of(std::deque<T>& script, T none = T()) {
    if (script.empty()) return none;
    T answer = std::move(script.front());
    script.pop_front();
    return answer;
}

}  // namespace zel::test
