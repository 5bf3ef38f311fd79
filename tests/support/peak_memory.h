#pragma once

#include <QFile>

// How far the process's peak resident memory rises while this object lives, in kB. The kernel
// keeps the peak (VmHWM), so a spike shorter than any sampling interval still counts.
class PeakMemory {
public:
    // Lowers the kernel's peak to the current resident size, so earlier work masks no rise.
    PeakMemory() : available_(resetPeak()), startKb_(peakKb()) {}
    bool available() const { return available_ && startKb_ >= 0; }
    qint64 growthKb() const { return peakKb() - startKb_; }

private:
    static bool resetPeak() {
        QFile clearRefs(QStringLiteral("/proc/self/clear_refs"));
        return clearRefs.open(QIODevice::WriteOnly) && clearRefs.write("5") == 1;
    }
    static qint64 peakKb() {
        QFile status(QStringLiteral("/proc/self/status"));
        if (status.open(QIODevice::ReadOnly)) {
            for (const QByteArray& line : status.readAll().split('\n')) {
                if (line.startsWith("VmHWM:")) {
                    return line.mid(6).trimmed().split(' ').front().toLongLong();
                }
            }
        }
        return -1;
    }

    bool available_;
    qint64 startKb_;
};
