#pragma once
// A Form1 over fake platform parts, with helpers to build frames.
#include <QByteArray>
#include <QTemporaryDir>
#include <cstdint>
#include <initializer_list>

#include "app/form1.h"
#include "fakes/fake_platform.h"

namespace zel::test {

QByteArray bytes(std::initializer_list<uint8_t> list);

// Appends the checksum byte that makes the frame's bytes sum to 0 modulo 256.
QByteArray with_checksum(std::initializer_list<uint8_t> bytes_without_sum);
QByteArray with_checksum(const QByteArray& bytes_without_sum);

// A data frame: flags, balloon state, volume in units of 0.004 L, time left in frames.
QByteArray data_frame(uint8_t flags = 0x04, uint8_t balloon = 1, int16_t volume_units = 0,
                      uint16_t time_left_frames = 0);

// The frame with its checksum byte spoiled.
QByteArray bad_sum(QByteArray frame);

// A status frame with the module's levels (raw counts: battery 104 and line 171 are the
// lowest that pass) that echoes the given settings.
QByteArray status_frame(uint8_t battery = 104, uint8_t line = 171, uint8_t pressure = 200,
                        uint8_t vacuum = 200, uint8_t duration = 15, float thresh = 1.2f,
                        uint8_t turbine = 1);

// The settings of a console started on a default zel.ini, and the patient file's stamp: dot
// numbers, a hold of 12 s armed on inhalation at 1.2 L, a chart of 2 L either way over 1000.
void default_settings(Form1& form);

// Jane Doe (A1) in force in `data` for the session, her folder made, ready to record.
void as_patient(Form1& form, const QString& data, const QString& session);

struct Rig {
    Rig();
    FakePlatform fakes;
    QTemporaryDir app_data;
    Form1 form;
    QStringList ended;  // end_program calls
};

}  // namespace zel::test
