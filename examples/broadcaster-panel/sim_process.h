#pragma once

#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A tolvane-sim of the installed package, run as a child process for as long as this object
// lives. ready() comes once it serves and has written the default.data that points a module
// at it.
// A child process that ends with the panel, also when the panel is killed or crashes.
class ChildProcess : public QProcess {
protected:
    void setupChildProcess() override;
};

class SimProcess : public QObject {
    Q_OBJECT
public:
    explicit SimProcess(QObject* parent = nullptr);
    ~SimProcess() override;

    // The simulator of the package the panel was built against.
    static QString program();

    // Starts it with these extra arguments (for instance "--latency", "200").
    void start(const QStringList& extraArguments = QStringList());
    QString origin() const { return origin_; }
    QString defaultDataPath() const { return defaultData_; }

signals:
    void ready();
    void failed(const QString& reason);

private:
    void readOutput();

    QTemporaryDir folder_;
    ChildProcess process_;
    QByteArray pending_;
    QString origin_;
    QString defaultData_;
};
