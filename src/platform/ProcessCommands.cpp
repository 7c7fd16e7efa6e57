// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ProcessCommands.h"

#include <QCoroFuture>
#include <QProcess>
#include <QPromise>
#include <QTimer>
#include <memory>

namespace ostrelle {

namespace {

constexpr qsizetype mostOutput = qsizetype{64} * 1024;

/// One command, from its start to its end.
class Command : public QObject {
public:
    explicit Command(std::chrono::milliseconds bound) {
        m_process.setStandardInputFile(QProcess::nullDevice());
        m_process.setStandardErrorFile(QProcess::nullDevice());
        connect(&m_process, &QProcess::readyReadStandardOutput, this, &Command::read);
        connect(&m_process, &QProcess::finished, this, [this](int status, QProcess::ExitStatus how) {
            if (how == QProcess::NormalExit) {
                m_result.status = status;
            }
            end();
        });
        connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart) {
                end();
            }
        });
        connect(&m_bound, &QTimer::timeout, &m_process, &QProcess::kill);
        m_bound.setSingleShot(true);
        m_bound.start(bound);
        m_ended.start();
    }

    QFuture<void> start(const QString& program, const QStringList& arguments) {
        m_process.start(program, arguments, QIODevice::ReadOnly);
        return m_ended.future();
    }
    CommandResult result() const { return m_result; }

private:
    void read() {
        m_result.output += m_process.readAllStandardOutput();
        m_result.output.truncate(mostOutput);
    }
    void end() {
        read();
        m_bound.stop();
        m_ended.finish();
    }

    QProcess m_process;
    QTimer m_bound;
    QPromise<void> m_ended;
    CommandResult m_result;
};

} // namespace

QCoro::Task<CommandResult> ProcessCommands::run(QString program, QStringList arguments) {
    Command command(m_bound);
    QFuture<void> ended = command.start(program, arguments);
    co_await ended;
    co_return command.result();
}

} // namespace ostrelle
