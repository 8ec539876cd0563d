#pragma once

#include <QDateEdit>
#include <QList>
#include <QPointer>
#include <QStringList>
#include <QTimeEdit>

#include <algorithm>
#include <optional>
#include <vector>

namespace dravel {

class TextLabel;

// A month to pick a day from. Arrows move by day and week, Page Up and Page Down by month, Return picks, Escape closes.
class DatePopup final : public QWidget {
    Q_OBJECT

  public:
    DatePopup(QDate selected, QDate today, QWidget* parent = nullptr);
    void showUnder(const QWidget& field);
    QDate cursor() const { return cursor_; }

  Q_SIGNALS:
    void picked(QDate);

  protected:
    void paintEvent(QPaintEvent*) override;
    void keyPressEvent(QKeyEvent*) override;

  private:
    class DayCell;

    // The Monday on which the six weeks shown for a month begin.
    static QDate firstDayShown(QDate month);
    void pick(QDate);
    void moveTo(QDate);
    void refresh();
    void focusCursor(Qt::FocusReason);

    QDate selected_, today_, cursor_;
    TextLabel* month_;
    QList<DayCell*> cells_;
};

// Digits typed over the sections of a field, from one of them on: "22/11", "240127", "14h30".
class TypedSections {
  public:
    struct Section {
        int width, greatestFirst; // a greater first digit is the whole number
    };
    TypedSections(std::vector<Section> sections, QString separators);

    bool take(const QKeyEvent&, int currentSection); // false: the key is none of its own
    void clear() { typed_.clear(); }
    bool isTyping() const { return !typed_.isEmpty(); }
    std::optional<int> number(int section) const; // none where nothing was typed
    qsizetype digits(int section) const { return parts_.at(section).size(); }
    int section() const { return std::min(at_, static_cast<int>(sections_.size()) - 1); } // the one that is typed next

  private:
    void split();

    std::vector<Section> sections_;
    QString separators_, typed_;
    QStringList parts_;
    int first_ = 0, at_ = 0;
};

// dd/MM/yyyy with a calendar symbol, one stop of the Tab key. A year of two digits is one of this century, and a date
// typed without a year the next one. Up and Down change the section; Alt+Down or a click on the symbol opens the popup.
class DateField final : public QDateEdit {
    Q_OBJECT

  public:
    explicit DateField(const QString& accessibleName, QWidget* parent = nullptr);
    ~DateField() override;
    void setToday(QDate today) { today_ = today; } // the day that the popup marks; without it the system's
    void openPopup();
    DatePopup* popup() const; // null while it is closed
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    QDateTime dateTimeFromText(const QString&) const override;
    // Past Qt's own, which goes from section to section. NOLINTNEXTLINE(bugprone-parent-virtual-call)
    bool focusNextPrevChild(bool forward) override { return QWidget::focusNextPrevChild(forward); }
    void paintEvent(QPaintEvent*) override;
    void focusOutEvent(QFocusEvent*) override;
    void keyPressEvent(QKeyEvent*) override;
    void mousePressEvent(QMouseEvent*) override;

  private:
    QDate typedDate() const;

    QDate today_, before_; // before: as it was when typing began
    TypedSections typed_;
    QPointer<DatePopup> popup_;
};

// HH:mm with a clock symbol, one stop of the Tab key.
class TimeField final : public QTimeEdit {
    Q_OBJECT

  public:
    explicit TimeField(const QString& accessibleName, QWidget* parent = nullptr);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    // Past Qt's own, which goes from section to section. NOLINTNEXTLINE(bugprone-parent-virtual-call)
    bool focusNextPrevChild(bool forward) override { return QWidget::focusNextPrevChild(forward); }
    void paintEvent(QPaintEvent*) override;
    void focusOutEvent(QFocusEvent*) override;
    void keyPressEvent(QKeyEvent*) override;

  private:
    TypedSections typed_;
};

}
