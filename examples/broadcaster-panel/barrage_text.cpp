#include "barrage_text.h"

BarrageItems readBarrageText(const QByteArray& text) {
    BarrageItems items;
    QByteArray key, value, *current = &key;
    bool haveKey = false;
    for (int i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\\') {
            const char next = i + 1 < text.size() ? text[++i] : '\0';
            if (next == '\\') {
                current->append('\\');
            } else if (next == 'e') {
                current->append('=');
            } else if (next == 's') {
                current->append(';');
            } else {
                return {};
            }
        } else if (c == '=') {
            if (haveKey || key.isEmpty()) {
                return {};
            }
            haveKey = true;
            current = &value;
        } else if (c == ';') {
            if (!haveKey) {
                return {};
            }
            items.append({QString::fromUtf8(key), QString::fromUtf8(value)});
            key.clear();
            value.clear();
            haveKey = false;
            current = &key;
        } else {
            current->append(c);
        }
    }
    // Text after the last ";" means the message was cut.
    return key.isEmpty() && !haveKey ? items : BarrageItems();
}

QString barrageValue(const BarrageItems& items, const QString& key) {
    for (const auto& item : items) {
        if (item.first == key) {
            return item.second;
        }
    }
    return QString();
}
