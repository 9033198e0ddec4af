#include "fakes/rig.h"

#include <QDir>

#include "link/commands.h"

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

QByteArray bad_sum(QByteArray frame) {
    frame[frame.size() - 1] = static_cast<char>(frame.back() + 1);
    return frame;
}

QByteArray status_frame(uint8_t battery, uint8_t line, uint8_t pressure, uint8_t vacuum,
                        uint8_t duration, float thresh, uint8_t turbine) {
    QByteArray raw(30, '\0');
    raw[0] = 39;
    raw.replace(1, 7, "ZEL 3.1");
    const auto t = encode_threshold(thresh);
    const uint8_t from_18[] = {turbine,  battery, line, pressure, vacuum,
                               duration, t[0],    t[1], 0x80};
    for (int k = 0; k < 9; ++k) raw[18 + k] = static_cast<char>(from_18[k]);
    raw[28] = static_cast<char>(0x80);
    return with_checksum(raw);
}

Rig::Rig() : form(fakes.platform, app_data.path()) {
    fakes.serial.set_PortOpen(true);
    fakes.serial.OnComm = [this] { form.MSComm1_OnComm(); };
    form.end_program = [this](int code) { ended.append(QString::number(code)); };
    form.Pic.Top = 0, form.Pic.Height = 7485, form.thresh_label.Height = 285;
}

void default_settings(Form1& form) {
    form.patient_parameter_filestamp = QStringLiteral("ZEL Patient Parameter File");
    form.number_format = QStringLiteral("dot");
    form.duration = 12, form.thresh = 1.2f, form.inhale = true;
    form.max_y = 2, form.min_y = -2, form.max_x = 1000, form.x_scale_factor = 1;
}

void as_patient(Form1& form, const QString& data, const QString& session) {
    form.data_directory = data;
    form.patient_last_name = QStringLiteral("Doe"), form.patient_first_name = "Jane";
    form.patient_medical_id = QStringLiteral("A1"), form.session = session;
    form.patient_defined = form.cmdRecord.Enabled = true;
    QDir().mkpath(data + QStringLiteral("/Doe_Jane_A1"));
}

}  // namespace zel::test
