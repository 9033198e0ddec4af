#include "wire.h"

namespace zelsim::test {

std::vector<SeenFrame> data_frames(const std::vector<uint8_t>& b) {
    std::vector<SeenFrame> frames;
    for (size_t k = 0; k < b.size();) {
        const bool data = b[k] == 0x83 && k + 8 <= b.size();
        if (data)
            frames.push_back({b[k + 1], b[k + 2], static_cast<int16_t>(b[k + 3] << 8 | b[k + 4]),
                              b[k + 5] << 8 | b[k + 6]});
        k += b[k] == 0x27 ? 31 : data ? 8 : 1;
    }
    return frames;
}

QByteArray to_bytes(const std::vector<uint8_t>& bytes) {
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size()));
}

Step send(double time, const std::string& commands) {
    const std::vector<uint8_t> letters(commands.begin(), commands.end());
    return {time, [letters](ControlModule& m, double now) { m.receive(letters, now); }};
}

std::vector<uint8_t> run(ControlModule& module, const std::vector<Step>& steps, double until) {
    std::vector<uint8_t> out;
    size_t next = 0;
    // Half a period off the module's clock, so that a step never ties with a frame.
    for (double t = 0.0; t <= until; t += frame_period) {
        while (next < steps.size() && steps[next].time <= t + frame_period / 2) {
            steps[next].act(module, t + frame_period / 2);
            ++next;
        }
        const auto bytes = module.advance_to(t + frame_period / 2);
        out.insert(out.end(), bytes.begin(), bytes.end());
    }
    return out;
}

}  // namespace zelsim::test
