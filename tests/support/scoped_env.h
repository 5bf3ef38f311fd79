#pragma once

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>

// Sets an environment variable for the life of the object and restores it afterwards.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const QByteArray& value)
        : name_(name), hadValue_(qEnvironmentVariableIsSet(name)), old_(qgetenv(name)) {
        qputenv(name, value);
    }
    ~ScopedEnv() {
        if (hadValue_) {
            qputenv(name_, old_);
        } else {
            qunsetenv(name_);
        }
    }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    const char* name_;
    bool hadValue_;
    QByteArray old_;
};

// Every endpoint at a loopback port where nothing listens, so a test never reaches a real host.
inline constexpr const char* kNowhereDefaultData =
    R"({"endpoints": {"origin": "http://127.0.0.1:1"}})";

// A private temporary location for logs, and a default.data of the test's choosing.
class IsolatedWorkspace {
public:
    IsolatedWorkspace()
        : tmp_("TMPDIR", dir_.path().toLocal8Bit()),
          data_("TOLVANE_DEFAULT_DATA", (dir_.path() + "/default.data").toLocal8Bit()) {
        writeDefaultData(kNowhereDefaultData);
    }

    QString path() const { return dir_.path(); }

    void writeDefaultData(const QByteArray& content) const {
        QFile file(dir_.path() + "/default.data");
        file.open(QIODevice::WriteOnly | QIODevice::Truncate);
        file.write(content);
    }

private:
    QTemporaryDir dir_;
    ScopedEnv tmp_;
    ScopedEnv data_;
};
