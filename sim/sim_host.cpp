#include "sim_host.h"

#include <QDateTime>
#include <ctime>
#include <QDir>
#include <QSaveFile>

namespace zelsim {

QString command_log_line(const Command& c) {
    const auto letter = static_cast<uint8_t>(c.letter);
    QString text = QStringLiteral("%1 ").arg(c.time, 10, 'f', 3);
    text += letter > 32 && letter < 127
                ? QString(QLatin1Char(c.letter))
                : QStringLiteral("0x%1").arg(letter, 2, 16, QLatin1Char('0'));
    for (uint8_t p : c.parameters) text += QStringLiteral(" %1").arg(p);
    return text;
}

SimHost::SimHost(HostOptions options, QObject* parent)
    : QObject(parent), opts(std::move(options)), sim(opts.seed) {
    if (opts.command_log.isEmpty())
        opts.command_log = opts.app_data + QStringLiteral("/sim/module-commands.log");
    ticker.setTimerType(Qt::PreciseTimer);
    ticker.setInterval(5);
    connect(&ticker, &QTimer::timeout, this, &SimHost::tick);
}

SimHost::~SimHost() { stop(); }

QString SimHost::link_path() const {
    return opts.app_data + QStringLiteral("/ports/") + opts.port_name;
}

QString SimHost::start() {
    clock.start();
    if (const std::string error = port.open(); !error.empty()) return QString::fromStdString(error);
    if (const std::string error = port.link_as(link_path().toStdString()); !error.empty())
        return QString::fromStdString(error);

    QDir().mkpath(QFileInfo(opts.command_log).absolutePath());
    command_log.setFileName(opts.command_log);
    if (!command_log.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
        return opts.command_log + QStringLiteral(": ") + command_log.errorString();
    log_line(command_log,
             QStringLiteral("# zelmoor-sim %1 on %2; seconds, command, parameters")
                 .arg(QDateTime::currentDateTime().toString(Qt::ISODateWithMs), device()));
    if (!opts.wire_log.isEmpty()) {
        wire_log.setFileName(opts.wire_log);
        if (!wire_log.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
            return opts.wire_log + QStringLiteral(": ") + wire_log.errorString();
        sim.module.on_wire = [this](const WireEvent& e) {
            static const char* const kinds[] = {"data", "status", "noise"};
            QString text =
                QStringLiteral("%1 %2").arg(e.time, 10, 'f', 3).arg(QLatin1String(kinds[e.kind]));
            for (uint8_t b : e.bytes) text += QStringLiteral(" %1").arg(b, 2, 16, QLatin1Char('0'));
            if (e.corrupt) text += QStringLiteral(" corrupt");
            log_line(wire_log, text);
        };
    }
    if (!opts.write_log.isEmpty()) {
        write_log.setFileName(opts.write_log);
        if (!write_log.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
            return opts.write_log + QStringLiteral(": ") + write_log.errorString();
    }
    sim.module.on_command = [this](const Command& c) {
        const QString text = command_log_line(c);
        log_line(command_log, text);
        runner.command_seen(c.letter);
        emit command_received(text);
    };

    write_gating_control();
    readable = std::make_unique<QSocketNotifier>(port.fd(), QSocketNotifier::Read);
    connect(readable.get(), &QSocketNotifier::activated, this, &SimHost::read_console);
    ticker.start();
    return {};
}

void SimHost::stop() {
    ticker.stop();
    readable.reset();
    port.close();
}

QString SimHost::run_line(const QString& line) {
    const ParsedLine parsed = parse_script_line(line.toStdString());
    if (!parsed.error.empty()) return QString::fromStdString(parsed.error);
    if (parsed.instruction) {
        runner.add(*parsed.instruction);
        runner.run(now(), sim);
        pass_on_messages();
        write_gating_control();
        if (runner.quit_requested()) emit quit_requested();
    }
    return {};
}

void SimHost::tick() {
    const double t = now();
    runner.run(t, sim);
    pass_on_messages();
    write_gating_control();
    if (runner.quit_requested()) {
        emit quit_requested();
        return;
    }
    const std::vector<uint8_t> out = sim.module.advance_to(t);
    if (out.empty()) return;
    // Stamped before the write: a reader of higher priority may run at once and act on the
    // frame before this process gets the processor back.
    timespec written{};
    clock_gettime(CLOCK_MONOTONIC, &written);
    port.write(out);
    if (write_log.isOpen()) {
        QString text = QString::number(written.tv_sec + written.tv_nsec / 1e9, 'f', 6);
        for (uint8_t b : out) text += QStringLiteral(" %1").arg(b, 2, 16, QLatin1Char('0'));
        log_line(write_log, text);
    }
}

void SimHost::pass_on_messages() {
    for (const std::string& text : sim.messages) emit message(QString::fromStdString(text));
    sim.messages.clear();
}

void SimHost::read_console() {
    const std::vector<uint8_t> bytes = port.read_available();
    if (bytes.empty()) return;
    sim.module.receive(bytes, now());
    // An answer goes out at once rather than at the next tick.
    tick();
}

void SimHost::write_gating_control() {
    if (gating_written && sim.gating == written_gating) return;
    const QString path = QString::fromStdString(gating_control_path(opts.app_data.toStdString()));
    QDir().mkpath(QFileInfo(path).absolutePath());
    // Replaced whole, so that the library never reads half a file.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return;
    file.write(QByteArray::fromStdString(gating_control_text(sim.gating)));
    if (!file.commit()) return;
    written_gating = sim.gating;
    gating_written = true;
}

void SimHost::log_line(QFile& file, const QString& text) {
    file.write(text.toUtf8() + '\n');
    file.flush();
}

}  // namespace zelsim
