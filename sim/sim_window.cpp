#include "sim_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "sim_host.h"

namespace zelsim {

namespace {

constexpr int trace_samples = 500;  // ten seconds at the refresh rate

QString balloon_text(BalloonState state) {
    switch (state) {
        case standby:
            return QStringLiteral("1 standby");
        case armed_on_inhalation:
            return QStringLiteral("2 armed on inhalation");
        case armed_on_exhalation:
            return QStringLiteral("3 armed on exhalation");
        case inflated:
            return QStringLiteral("4 inflated: holding");
        case deflating:
            return QStringLiteral("5 deflating after a fault");
    }
    return QString::number(state);
}

QString relay_text(char state) {
    switch (state) {
        case 'O':
            return QStringLiteral("open");
        case 'o':
            return QStringLiteral("opening");
        case 'C':
            return QStringLiteral("closed: beam enabled");
        case 'c':
            return QStringLiteral("closing");
        case 'X':
            return QStringLiteral("opening error");
        case 'Y':
            return QStringLiteral("closing error");
        case 'U':
            return QStringLiteral("unknown");
    }
    return QStringLiteral("-");
}

QGroupBox* group(const QString& title, QLayout* layout) {
    auto* box = new QGroupBox(title);
    box->setLayout(layout);
    return box;
}

}  // namespace

VolumeTrace::VolumeTrace(QWidget* parent) : QWidget(parent) {
    setMinimumSize(300, 170);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void VolumeTrace::add(double litres, bool holding, double threshold_litres) {
    samples.push_back({litres, holding});
    while (samples.size() > trace_samples) samples.pop_front();
    threshold = threshold_litres;
    update();
}

void VolumeTrace::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.fillRect(rect(), Qt::white);
    p.setPen(QColor(160, 160, 160));
    p.drawRect(rect().adjusted(0, 0, -1, -1));
    if (samples.empty()) return;
    double low = threshold, high = threshold;
    for (const Sample& s : samples) low = std::min(low, s.litres), high = std::max(high, s.litres);
    const double margin = std::max(0.2, (high - low) * 0.1);
    low -= margin;
    high += margin;
    const double w = width() - 2, h = height() - 2;
    const auto x_of = [&](size_t k) { return 1 + w * k / (trace_samples - 1); };
    const auto y_of = [&](double v) { return 1 + h * (high - v) / (high - low); };
    for (size_t k = 0; k < samples.size(); ++k)
        if (samples[k].holding)
            p.fillRect(QRectF(x_of(k), 1, w / trace_samples + 1, h), QColor(255, 240, 160));
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(QColor(200, 60, 60), 1, Qt::DashLine));
    p.drawLine(QPointF(1, y_of(threshold)), QPointF(w, y_of(threshold)));
    p.setPen(QPen(QColor(20, 70, 160), 1.6));
    QPolygonF line;
    for (size_t k = 0; k < samples.size(); ++k) line << QPointF(x_of(k), y_of(samples[k].litres));
    p.drawPolyline(line);
    p.setPen(QColor(90, 90, 90));
    p.drawText(rect().adjusted(6, 4, -6, -4), Qt::AlignLeft | Qt::AlignTop,
               QStringLiteral("%1 L").arg(high, 0, 'f', 1));
    p.drawText(rect().adjusted(6, 4, -6, -4), Qt::AlignLeft | Qt::AlignBottom,
               QStringLiteral("%1 L").arg(low, 0, 'f', 1));
    p.drawText(rect().adjusted(6, 4, -6, -4), Qt::AlignRight | Qt::AlignBottom,
               QStringLiteral("last 10 s"));
    p.setPen(QColor(200, 60, 60));
    p.drawText(rect().adjusted(6, 4, -6, -4), Qt::AlignRight | Qt::AlignTop,
               QStringLiteral("threshold %1 L").arg(threshold, 0, 'f', 3));
}

SimWindow::SimWindow(SimHost& host_, QWidget* parent) : QWidget(parent), host(host_) {
    setWindowTitle(QStringLiteral("Zelmoor control module simulator"));
    auto* grid = new QGridLayout(this);
    grid->addWidget(module_group(), 0, 0);
    grid->addWidget(patient_group(), 1, 0);
    grid->addWidget(command_group(), 2, 0);
    auto* right = new QVBoxLayout;
    right->addWidget(faults_group());
    right->addWidget(supplies_group());
    right->addWidget(line_group());
    right->addWidget(gating_group());
    right->addStretch();
    grid->addLayout(right, 0, 1, 3, 1);
    grid->setColumnStretch(0, 3);
    grid->setColumnStretch(1, 2);
    grid->setRowStretch(2, 1);

    connect(&host, &SimHost::command_received, this,
            [this](const QString& text) { received->appendPlainText(text); });
    connect(&host, &SimHost::message, this, [this](const QString& text) { error_label->setText(text); });
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &SimWindow::refresh);
    timer->start(20);
    refresh();
}

void SimWindow::run(const QString& line) {
    const QString error = host.run_line(line);
    error_label->setText(error.isEmpty() ? QString() : line + QStringLiteral(": ") + error);
}

void SimWindow::follow(QWidget* widget, std::function<void()> update) {
    followers.push_back([widget, update] {
        if (widget->hasFocus()) return;
        const QSignalBlocker block(widget);
        update();
    });
}

QDoubleSpinBox* SimWindow::number_box(double low, double high, double step, int decimals,
                                      const QString& suffix, std::function<double()> value,
                                      const QString& instruction) {
    auto* box = new QDoubleSpinBox;
    box->setRange(low, high);
    box->setSingleStep(step);
    box->setDecimals(decimals);
    box->setSuffix(suffix);
    box->setValue(value());
    box->setKeyboardTracking(false);
    follow(box, [box, value] { box->setValue(value()); });
    connect(box, &QDoubleSpinBox::valueChanged, this,
            [this, instruction](double v) { run(instruction.arg(v, 0, 'f', 4)); });
    return box;
}

QWidget* SimWindow::module_group() {
    auto* form = new QFormLayout;
    auto* port = new QLabel(QStringLiteral("%1  as  %2").arg(host.device(), host.link_path()));
    port->setTextInteractionFlags(Qt::TextSelectableByMouse);
    form->addRow(QStringLiteral("Port:"), port);
    form->addRow(QStringLiteral("Stream:"), stream_label = new QLabel);
    form->addRow(QStringLiteral("Balloon:"), balloon_label = new QLabel);
    form->addRow(QStringLiteral("Volume:"), volume_label = new QLabel);
    form->addRow(QStringLiteral("Time left:"), time_left_label = new QLabel);
    form->addRow(QStringLiteral("Settings held:"), settings_label = new QLabel);
    trace = new VolumeTrace;
    auto* column = new QVBoxLayout;
    column->addLayout(form);
    column->addWidget(trace, 1);
    return group(QStringLiteral("Control module"), column);
}

QWidget* SimWindow::patient_group() {
    const auto b = [this] { return host.simulator().module.breathing(); };
    switch_button = new QPushButton(QStringLiteral("Switch held"));
    switch_button->setCheckable(true);
    switch_button->setChecked(true);
    connect(switch_button, &QPushButton::clicked, this, [this](bool held) {
        run(held ? QStringLiteral("switch press") : QStringLiteral("switch release"));
    });
    auto* distress = new QPushButton(QStringLiteral("Double press (distress)"));
    connect(distress, &QPushButton::clicked, this,
            [this] { run(QStringLiteral("switch double")); });
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(switch_button);
    buttons->addWidget(distress);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Patient's switch:"), buttons);
    form->addRow(QStringLiteral("Resting level:"),
                 number_box(
                     -5, 5, 0.1, 2, QStringLiteral(" L"), [b] { return b().rest_litres; },
                     QStringLiteral("breathing rest %1")));
    form->addRow(QStringLiteral("Tidal volume:"),
                 number_box(
                     0, 6, 0.1, 2, QStringLiteral(" L"), [b] { return b().amplitude_litres; },
                     QStringLiteral("breathing amplitude %1")));
    form->addRow(QStringLiteral("Breath period:"),
                 number_box(
                     1, 30, 0.5, 1, QStringLiteral(" s"), [b] { return b().period_seconds; },
                     QStringLiteral("breathing period %1")));
    form->addRow(QStringLiteral("Noise:"),
                 number_box(
                     0, 0.5, 0.002, 3, QStringLiteral(" L"), [b] { return b().noise_litres; },
                     QStringLiteral("breathing noise %1")));
    return group(QStringLiteral("Patient"), form);
}

QWidget* SimWindow::faults_group() {
    auto* grid = new QGridLayout;
    const char* const names[] = {"line", "battery", "transducer", "pneumatic"};
    const char* const captions[] = {"Line (mains)", "Battery", "Transducer", "Pneumatic (balloon)"};
    for (int k = 0; k < 4; ++k) {
        fault_boxes[k] = new QCheckBox(QString::fromLatin1(captions[k]));
        const QString name = QString::fromLatin1(names[k]);
        connect(fault_boxes[k], &QCheckBox::toggled, this, [this, name](bool on) {
            run(QStringLiteral("fault %1 %2")
                    .arg(name, on ? QStringLiteral("on") : QStringLiteral("off")));
        });
        grid->addWidget(fault_boxes[k], k / 2, k % 2);
    }
    return group(QStringLiteral("Fault lines"), grid);
}

QWidget* SimWindow::supplies_group() {
    const auto s = [this] { return host.simulator().module.supplies; };
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Battery:"),
                 number_box(
                     0, 9.25, 0.1, 2, QStringLiteral(" V"), [s] { return s().battery_volts; },
                     QStringLiteral("battery %1")));
    form->addRow(QStringLiteral("Line:"),
                 number_box(
                     0, 15, 0.5, 2, QStringLiteral(" V"), [s] { return s().line_volts; },
                     QStringLiteral("line %1")));
    form->addRow(QStringLiteral("Pressure reservoir:"),
                 number_box(
                     -1.875, 16.875, 0.5, 2, QStringLiteral(" psi"),
                     [s] { return s().pressure_psi; }, QStringLiteral("pressure %1")));
    form->addRow(QStringLiteral("Vacuum reservoir:"),
                 number_box(
                     -1.875, 16.875, 0.5, 2, QStringLiteral(" psi"), [s] { return s().vacuum_psi; },
                     QStringLiteral("vacuum %1")));
    return group(QStringLiteral("Status frame levels"), form);
}

QWidget* SimWindow::line_group() {
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Bad checksums:"),
                 number_box(
                     0, 100, 1, 0, QStringLiteral(" %"),
                     [this] { return host.simulator().module.corrupt_rate * 100; },
                     QStringLiteral("corrupt %1e-2")));
    form->addRow(QStringLiteral("Noise between frames:"),
                 number_box(
                     0, 100, 1, 0, QStringLiteral(" %"),
                     [this] { return host.simulator().module.noise_rate * 100; },
                     QStringLiteral("noise %1e-2")));
    auto* seconds = new QDoubleSpinBox;
    seconds->setRange(0.1, 60);
    seconds->setValue(1.0);
    seconds->setSuffix(QStringLiteral(" s"));
    auto* cut = new QPushButton(QStringLiteral("Cut the line"));
    connect(cut, &QPushButton::clicked, this,
            [this, seconds] { run(QStringLiteral("cut %1").arg(seconds->value())); });
    auto* row = new QHBoxLayout;
    row->addWidget(cut);
    row->addWidget(seconds);
    form->addRow(QStringLiteral("Link:"), row);
    auto* echo = new QCheckBox(QStringLiteral("Echo a wrong threshold"));
    connect(echo, &QCheckBox::toggled, this, [this](bool wrong) {
        run(wrong ? QStringLiteral("echo wrong") : QStringLiteral("echo right"));
    });
    follow(echo, [this, echo] { echo->setChecked(host.simulator().module.wrong_echo); });
    form->addRow(QStringLiteral("Settings:"), echo);
    return group(QStringLiteral("Serial line"), form);
}

QWidget* SimWindow::gating_group() {
    auto* connected = new QCheckBox(QStringLiteral("Library connected"));
    connected->setChecked(true);
    connect(connected, &QCheckBox::toggled, this, [this](bool on) {
        run(QStringLiteral("gating connected ") +
            (on ? QStringLiteral("yes") : QStringLiteral("no")));
    });
    auto* link = new QCheckBox(QStringLiteral("Relay link up"));
    link->setChecked(true);
    connect(link, &QCheckBox::toggled, this, [this](bool on) {
        run(QStringLiteral("gating relay-link ") +
            (on ? QStringLiteral("up") : QStringLiteral("down")));
    });
    auto* enable = new QComboBox;
    enable->addItems(
        {QStringLiteral("enabled"), QStringLiteral("disabled"), QStringLiteral("fault")});
    connect(enable, &QComboBox::currentTextChanged, this,
            [this](const QString& text) { run(QStringLiteral("gating enable ") + text); });
    auto* error = new QComboBox;
    error->addItems({QStringLiteral("none"), QStringLiteral("opening"), QStringLiteral("closing"),
                     QStringLiteral("unknown")});
    connect(error, &QComboBox::currentTextChanged, this,
            [this](const QString& text) { run(QStringLiteral("gating relay-error ") + text); });
    auto* violation = new QPushButton(QStringLiteral("Raise a timing violation"));
    connect(violation, &QPushButton::clicked, this,
            [this] { run(QStringLiteral("gating timing-violation")); });

    follow(connected,
           [this, connected] { connected->setChecked(host.simulator().gating.connected); });
    follow(link, [this, link] { link->setChecked(host.simulator().gating.relay_link_up); });
    follow(enable, [this, enable] {
        enable->setCurrentIndex(QByteArrayView("EDF").indexOf(host.simulator().gating.enable));
    });
    follow(error, [this, error] {
        error->setCurrentIndex(static_cast<int>(host.simulator().gating.relay_error));
    });
    auto* checks = new QHBoxLayout;
    checks->addWidget(connected);
    checks->addWidget(link);
    auto* form = new QFormLayout;
    form->addRow(checks);
    form->addRow(QStringLiteral("Enable state:"), enable);
    form->addRow(QStringLiteral("Relay error:"), error);
    form->addRow(violation);
    form->addRow(QStringLiteral("Relay:"), relay_label = new QLabel(QStringLiteral("-")));
    return group(QStringLiteral("Gating system (libtarrow-sim)"), form);
}

QWidget* SimWindow::command_group() {
    command = new QLineEdit;
    command->setPlaceholderText(QStringLiteral("a script line, e.g. \"fault pneumatic on\""));
    connect(command, &QLineEdit::returnPressed, this, [this] {
        run(command->text());
        if (error_label->text().isEmpty()) command->clear();
    });
    error_label = new QLabel;
    error_label->setStyleSheet(QStringLiteral("color: rgb(180, 0, 0)"));
    received = new QPlainTextEdit;
    received->setReadOnly(true);
    received->setMaximumBlockCount(300);
    received->setFont(QFont(QStringLiteral("monospace")));
    auto* column = new QVBoxLayout;
    column->addWidget(command);
    column->addWidget(error_label);
    column->addWidget(new QLabel(QStringLiteral("Commands received (seconds, letter, bytes):")));
    column->addWidget(received, 1);
    return group(QStringLiteral("Script"), column);
}

void SimWindow::refresh() {
    const ControlModule& m = host.simulator().module;
    const double now = host.now();
    stream_label->setText(m.link_cut(now) ? QStringLiteral("line cut")
                          : m.streaming() ? QStringLiteral("sending a data frame every 20 ms")
                                          : QStringLiteral("waiting for \"E\""));
    bool fault_stands = false;
    for (Fault f : {Fault::line, Fault::battery, Fault::transducer, Fault::pneumatic})
        fault_stands |= m.fault(f);
    balloon_label->setText(
        balloon_text(m.balloon().state()) +
        (fault_stands ? QStringLiteral(" (a fault stands: no arming)") : QString()));
    const double litres = m.volume_units() * 0.004;
    volume_label->setText(QStringLiteral("%1 L").arg(litres, 0, 'f', 3));
    time_left_label->setText(
        QStringLiteral("%1 s").arg(m.balloon().time_left_frames() * 0.02, 0, 'f', 2));
    const ModuleSettings& s = m.settings();
    settings_label->setText(QStringLiteral("hold %1 s, threshold %2 L, factors %3 / %4")
                                .arg(s.duration_seconds)
                                .arg(s.threshold_units * 0.004, 0, 'f', 3)
                                .arg(s.forward_calibration / 8192000.0, 0, 'f', 5)
                                .arg(s.reverse_calibration / 8192000.0, 0, 'f', 5));
    trace->add(litres, m.balloon().state() == inflated, s.threshold_units * 0.004);
    {
        const QSignalBlocker block(switch_button);
        switch_button->setChecked(m.switch_closed());
        switch_button->setText(m.switch_closed() ? QStringLiteral("Switch held")
                                                 : QStringLiteral("Switch released"));
        switch_button->setStyleSheet(m.switch_closed()
                                         ? QStringLiteral("background: rgb(170, 220, 170)")
                                         : QStringLiteral("background: rgb(250, 190, 120)"));
    }
    for (int k = 0; k < 4; ++k) {
        const QSignalBlocker block(fault_boxes[k]);
        fault_boxes[k]->setChecked(m.fault(static_cast<Fault>(k)));
    }
    if (++refreshes % 10 == 0) {
        for (const auto& update : followers) update();
        QFile state(
            QString::fromStdString(gating_state_path(host.options().app_data.toStdString())));
        QString text = QStringLiteral("no call yet");
        if (state.open(QIODevice::ReadOnly)) {
            char relay = 0, permission = 0, fast = 0;
            for (const QByteArray& line : state.readAll().split('\n')) {
                if (line.startsWith("relay_state=") && line.size() > 12) relay = line[12];
                if (line.startsWith("permission=") && line.size() > 11) permission = line[11];
                if (line.startsWith("fast_gating=") && line.size() > 12) fast = line[12];
            }
            text = relay_text(relay) + (permission == 'L' ? QStringLiteral(", enable locked")
                                                          : QStringLiteral(", enable unlocked"));
            if (fast == '!') text += QStringLiteral(", timing violation");
        }
        relay_label->setText(text);
    }
}

}  // namespace zelsim
