#include "Notes.h"

#include <QDate>
#include <QSettings>
#include <QStandardPaths>

namespace {

QString file() {
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/notes.ini";
}

QString thisMonth() {
    return QDate::currentDate().toString("yyyy-MM");
}

} // namespace

Notes Notes::load() {
    const QSettings settings(file(), QSettings::IniFormat);
    Notes notes;
    for (const QString& text : settings.value("texts").toStringList()) {
        notes.texts.push_back(text.toStdString());
    }
    notes.plan = settings.value("plan", "free").toString().toStdString();
    if (settings.value("month") == thisMonth()) {
        notes.exportsThisMonth = settings.value("exports").toInt();
    }
    return notes;
}

void Notes::save() const {
    QSettings settings(file(), QSettings::IniFormat);
    QStringList list;
    for (const std::string& text : texts) {
        list.append(QString::fromStdString(text));
    }
    settings.setValue("texts", list);
    settings.setValue("plan", QString::fromStdString(plan));
    settings.setValue("month", thisMonth());
    settings.setValue("exports", exportsThisMonth);
}
