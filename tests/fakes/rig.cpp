#include "fakes/rig.h"

namespace zel::test {

QByteArray bytes(std::initializer_list<uint8_t> list) {
    QByteArray out;
    for (uint8_t b : list) out.append(static_cast<char>(b));
    return out;
}

QByteArray with_checksum(const QByteArray& bytes) {
    uint8_t sum = 0;
    for (char c : bytes) sum = static_cast<uint8_t>(sum + static_cast<uint8_t>(c));
    QByteArray frame = bytes;
    frame.append(static_cast<char>(static_cast<uint8_t>(0x100 - sum)));
    return frame;
}

QByteArray with_checksum(std::initializer_list<uint8_t> list) { return with_checksum(bytes(list)); }

QByteArray data_frame(uint8_t flags, uint8_t balloon, int16_t volume_units,
                      uint16_t time_left_frames) {
    const auto v = static_cast<uint16_t>(volume_units);
    return with_checksum({131, flags, balloon, static_cast<uint8_t>(v >> 8),
                          static_cast<uint8_t>(v & 0xFF),
                          static_cast<uint8_t>(time_left_frames >> 8),
                          static_cast<uint8_t>(time_left_frames & 0xFF)});
}

Rig::Rig() : form(fakes.platform, app_data.path()) {
    fakes.serial.set_PortOpen(true);
    fakes.serial.OnComm = [this] { form.MSComm1_OnComm(); };
    form.end_program = [this](int code) { ended.append(QString::number(code)); };
    form.Pic.Top = 0;
    form.Pic.Height = 7485;
    form.thresh_label.Height = 285;
}

}  // namespace zel::test
