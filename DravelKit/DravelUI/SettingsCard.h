#pragma once

#include "DravelKit/DravelUI/Card.h"

class QBoxLayout;

namespace dravel {

class Disc;

// One setting: symbol, title, detail, and controls at the right.
class SettingRow final : public QWidget {
    Q_OBJECT

  public:
    SettingRow(Symbol, const QString& title, const QString& detail = {}, QWidget* parent = nullptr);

    void setTitle(const QString&);
    void setDetail(const QString&, const Theme::Tone& = Theme::textSecondary); // "" hides it
    void setNote(const QString&, const Theme::Tone& = Theme::textSecondary);   // a result under the detail; "" hides it
    void setDone(bool, const QString& accessibleName = {});                    // the check on a soft disc
    void setStatus(const QString&);                                            // a word at the right; "" hides it
    void setTextsSelectable(bool);
    void addControl(QWidget*); // takes it; left to right
    void setSeparated(bool);   // a line above; the card sets it

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    Symbol symbol_;
    bool separated_ = false;
    TextLabel *title_, *detail_, *note_ = nullptr, *status_ = nullptr;
    Disc* done_ = nullptr;
    QBoxLayout *texts_, *controls_;
};

// A titled group of settings; without a title it has no head.
class SettingsCard final : public Card {
    Q_OBJECT

  public:
    explicit SettingsCard(QWidget* parent = nullptr);
    SettingsCard(Symbol, const QString& title, const QString& intro = {}, QWidget* parent = nullptr);
    SettingRow* addRow(SettingRow*); // takes it

  private:
    QBoxLayout* column_;
    int rows_ = 0;
};

}
