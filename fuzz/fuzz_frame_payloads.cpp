// Frames with good checksums, their contents taken from the input, so that every one reaches
// the data or the status frame handling. The first byte sets the console's situation; then
// each frame is a byte that chooses its kind (odd: status) and its 6 or 29 bytes behind the
// start byte, delivered whole in one notification. While recording, every data frame gives
// one line in the curve file, and the file reads back with the review's reader.
#include <QDir>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "console.h"
#include "data/curve_file_reader.h"
#include "fakes/rig.h"

namespace {

enum Situation : uint8_t {
    recording = 0x01,
    gated = 0x02,
    gating_override = 0x04,
    about_open = 0x08,
    comma_machine = 0x10,
    settings_confirmed = 0x20,
    treating = 0x40,
    exhale_trigger = 0x80,
};

void set_up(zel::fuzz::Console& c, uint8_t situation) {
    zel::Form1& form = c.form;
    if (situation & comma_machine) c.fakes.locale.separator = QLatin1Char(',');
    form.Gated_Treatment = situation & gated;
    form.Gating_OverRide = situation & gating_override;
    form.about_visible = situation & about_open;
    form.settings_confirm = !(situation & settings_confirmed);
    form.sw_state = (situation & treating) ? 1 : 0;
    form.inhale = !(situation & exhale_trigger);
    form.thresh = 1.2f;
    form.duration = 15;
    if (situation & recording) {
        form.data_directory = c.app_data.path() + QStringLiteral("/patients");
        form.patient_last_name = QStringLiteral("Doe");
        form.patient_first_name = QStringLiteral("Jane");
        form.patient_medical_id = QStringLiteral("A1");
        form.session = QStringLiteral("1");
        form.cmdRecord.Enabled = true;
        QDir().mkpath(form.data_directory + QStringLiteral("/Doe_Jane_A1"));
        form.cmdRecord_Click();
    }
}

// What each recorded line must read back as.
struct Sample {
    double volume;
    bool patient_switch;
};

void expect_recording_reads_back(zel::fuzz::Console& c, const std::vector<Sample>& samples) {
    zel::Form1& form = c.form;
    if (!form.bRecord) return;
    zel::CurveData curve;
    try {
        zel::LoadCurveData2(form.record_filename, curve, c.fakes.locale.separator);
    } catch (const zel::ZelError& e) {
        if (samples.empty() && e.number == zel::err_subscript) return;  // a header alone
        std::fprintf(stderr, "recorded curve does not read back: %d %s\n", e.number,
                     qPrintable(e.description));
        std::abort();
    }
    if (curve.volume.size() != samples.size()) {
        std::fprintf(stderr, "%zu frames, %zu samples read back\n", samples.size(),
                     curve.volume.size());
        std::abort();
    }
    for (size_t k = 0; k < samples.size(); ++k) {
        if (std::fabs(curve.volume[k] - samples[k].volume) > 1e-9) std::abort();
        if ((curve.patient_switch[k] == 1) != samples[k].patient_switch) std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool loaded = (zel::load_default_messages(), true);
    (void)loaded;
    if (size < 1) return 0;
    zel::fuzz::Console c;
    std::vector<Sample> samples;
    try {
        set_up(c, data[0]);
        size_t at = 1;
        while (at < size) {
            const bool status = data[at++] & 1;
            const size_t length = status ? 29 : 6;
            QByteArray frame(1, static_cast<char>(status ? 39 : 131));
            for (size_t k = 0; k < length; ++k)
                frame.append(static_cast<char>(at < size ? data[at++] : 0));
            const double counted = c.form.total_counts;
            c.fakes.serial.receive(zel::test::with_checksum(frame));
            zel::fuzz::expect_assembly_in_bounds(c.form);
            if (c.form.packet_found) std::abort();  // a whole frame is handled at once
            if (c.form.total_counts != counted + (status ? 0 : 1)) std::abort();
            if (!status && c.form.bRecord)
                samples.push_back({c.form.volume, c.form.patient_switch});
        }
    } catch (const zel::ZelError& e) {
        zel::fuzz::expect_prescribed(e);
        return 0;
    }
    expect_recording_reads_back(c, samples);
    return 0;
}
