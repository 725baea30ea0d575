#pragma once

// Qt's texts in GoogleTest's failure messages as the text they are, not as their bytes.

#include <ostream>

#include <QString>
#include <QStringList>

inline void PrintTo(const QString& text, std::ostream* out) {
  *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QStringList& texts, std::ostream* out) {
  *out << '{';
  for (qsizetype i = 0; i < texts.size(); ++i)
    *out << (i ? ", \"" : "\"") << texts[i].toStdString() << '"';
  *out << '}';
}
