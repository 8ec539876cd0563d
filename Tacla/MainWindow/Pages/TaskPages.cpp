#include "Tacla/MainWindow/Pages/TaskPages.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Card.h"
#include "DravelKit/DravelUI/Disc.h"
#include "DravelKit/DravelUI/TextField.h"
#include "DravelKit/DravelUI/TextLabel.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/Pages/TaskColumn.h"
#include "Tacla/MainWindow/QtValues.h"
#include "Tacla/MainWindow/RefreshWhileVisible.h"
#include "Tacla/MainWindow/Rows/AddTaskCard.h"

#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace tacla {

namespace Theme = dravel::Theme;
namespace Typography = dravel::Theme::Typography;
using namespace Qt::StringLiterals;
using dravel::TextLabel;

// The head of the today page: how the day stands.
class HeroCard final : public dravel::Card {
  public:
    explicit HeroCard(QWidget* parent = nullptr);
    void setContents(const TodayContents&);

  protected:
    void resizeEvent(QResizeEvent*) override;

  private:
    dravel::TextLabel *overline_, *headline_, *detail_;
    dravel::ProgressRing* ring_;
};

namespace {

constexpr auto blink = std::chrono::milliseconds(20); // what is found by then is waited for
constexpr int heroHeight = 126, padding = 24, ringSize = 78, lineGap = 4;
constexpr int roomForRing = 440; // in a narrower card the words come first, which say the same

}

HeroCard::HeroCard(QWidget* parent)
    : Card(parent, Kind::hero), overline_(new TextLabel(Typography::subtitle, Theme::accentOnSoft, {}, this)),
      headline_(new TextLabel(Typography::pageTitle, Theme::text, {}, this)),
      detail_(new TextLabel(Typography::callout, Theme::textSecondary, {}, this)),
      ring_(new dravel::ProgressRing(this)) {
    setObjectName(u"hero"_s);
    overline_->setObjectName(u"hero.overline"_s);
    headline_->setObjectName(u"hero.headline"_s);
    detail_->setObjectName(u"hero.detail"_s);
    ring_->setObjectName(u"hero.ring"_s);
    setFixedHeight(heroHeight);
}

void HeroCard::setContents(const TodayContents& contents) {
    overline_->setText(toQt(contents.overline));
    headline_->setText(toQt(contents.headline));
    detail_->setText(toQt(contents.detail));
    ring_->setProgress(static_cast<int>(contents.done), static_cast<int>(contents.total), toQt(contents.detail));
}

void HeroCard::resizeEvent(QResizeEvent* event) {
    Card::resizeEvent(event);
    ring_->setVisible(width() >= roomForRing);
    const int ringLeft = width() - (width() >= roomForRing ? padding + ringSize : 0);
    ring_->setGeometry(ringLeft, (height() - ringSize) / 2, ringSize, ringSize);
    int top = padding;
    const int room = ringLeft - 2 * padding;
    for (const auto& [label, style] : {std::pair{overline_, Typography::subtitle},
                                       {headline_, Typography::pageTitle},
                                       {detail_, Typography::callout}}) {
        label->setGeometry(padding, top, room, style.line);
        top += style.line + lineGap;
    }
}

// What is wrong with the file or the calendar; hidden when nothing is.
class ProblemsCard final : public dravel::Card {
  public:
    explicit ProblemsCard(AppModel&, QWidget* parent = nullptr);
    void setProblems(std::vector<Problem>);

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    void offerLineEnds();

    AppModel& model_;
    std::vector<Problem> problems_;
    std::vector<dravel::TextLabel*> lines_;
    dravel::Button* lineEnds_ = nullptr;
    QVBoxLayout* column_;
};

ProblemsCard::ProblemsCard(AppModel& model, QWidget* parent)
    : Card(parent), model_(model), column_(new QVBoxLayout(this)) {
    setObjectName(u"problems"_s);
    column_->setContentsMargins(textColumn, 12, Theme::Space::md, 12);
    column_->setSpacing(Theme::Space::sm);
    hide();
}

void ProblemsCard::setProblems(std::vector<Problem> problems) {
    if (problems == problems_) return;
    problems_ = std::move(problems);
    for (auto* line : std::exchange(lines_, {})) delete line;
    if (auto* button = std::exchange(lineEnds_, nullptr)) button->deleteLater(); // its click may be what brings us here
    for (const auto& problem : problems_) {
        auto* line = new dravel::TextLabel(Theme::Typography::body, toneOf(problem.role), toQt(problem.text), this);
        line->setObjectName(u"problem"_s);
        line->setWraps(true);
        line->setSelectable(true);
        column_->addWidget(line);
        lines_.push_back(line);
        if (problem.offersLineEnds) offerLineEnds();
    }
    setVisible(!problems_.empty());
    update();
}

void ProblemsCard::offerLineEnds() {
    lineEnds_ = new dravel::Button(dravel::Button::Kind::neutral, u"Convertir le fichier"_s, this);
    lineEnds_->setObjectName(u"problem.lineEnds"_s);
    lineEnds_->setAccessibleName(u"Convertir les fins de ligne du fichier"_s);
    column_->addWidget(lineEnds_, 0, Qt::AlignLeft);
    connect(lineEnds_, &QAbstractButton::clicked, this, [this] { model_.list().apply(UserEdit::plainLineEnds()); });
}

void ProblemsCard::paintEvent(QPaintEvent* event) {
    Card::paintEvent(event);
    QPainter painter(this);
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const QRectF column(iconColumn, lines_[i]->y(), iconWidth, Theme::Typography::body.line);
        dravel::paintSymbol(painter, column, dravel::Symbol::exclamationTriangleFill, 16,
                            toneOf(problems_[i].role).on(*this));
    }
}

TodayPage::TodayPage(AppModel& model, const dravel::Now& now, QWidget* parent)
    : DravelPage(parent), model_(model), hero_(new HeroCard(&stage())), add_(new AddTaskCard(model, now, &stage())),
      problems_(new ProblemsCard(model, &stage())), tasks_(new TaskColumn(*this, model, now)) {
    setObjectName(toQt("page." + std::string(rawValue(Section::today))));
    setAccessibleName(toQt(title(Section::today)));
    for (QWidget* card : std::initializer_list<QWidget*>{hero_, add_, problems_, tasks_}) add(card);
    new RefreshWhileVisible(*this, model.changed, [this] { refresh(); });
    connect(tasks_, &TaskColumn::draftsGivenUp, this, &TodayPage::refresh);
    refresh();
}

void TodayPage::beginTask() {
    reveal(*add_);
    add_->focusTitle();
}

void TodayPage::forgetDay() { add_->forgetDay(); }

void TodayPage::refresh() {
    const auto& state = model_.state();
    auto contents = todayContents(state);
    hero_->setContents(contents);
    add_->setToday(state.today);
    problems_->setProblems(problems(state));
    tasks_->setGroups(std::move(contents.groups), state.today);
}

ListPage::ListPage(Section section, AppModel& model, const dravel::Now& now, QWidget* parent)
    : DravelPage(toQt(title(section)), {}, parent), model_(model), problems_(new ProblemsCard(model, &stage())),
      tasks_(new TaskColumn(*this, model, now)) {
    setObjectName(toQt("page." + std::string(rawValue(section))));
    auto contents = listContents(section, model.state());
    empty_ = new dravel::EmptyCard(contents.emptySymbol, toQt(contents.empty), &stage());
    for (QWidget* card : std::initializer_list<QWidget*>{problems_, empty_, tasks_}) add(card);
    const auto refreshed = [this, section] { refresh(listContents(section, model_.state())); };
    new RefreshWhileVisible(*this, model.changed, refreshed);
    connect(tasks_, &TaskColumn::draftsGivenUp, this, refreshed);
    refresh(std::move(contents));
}

void ListPage::postponeAll() { tasks_->postponeAll(); }

void ListPage::refresh(ListContents contents) {
    setSubtitle(toQt(contents.subtitle));
    problems_->setProblems(std::move(contents.problems));
    empty_->setVisible(contents.groups.empty());
    tasks_->setGroups(std::move(contents.groups), model_.state().today);
}

namespace {

// The card at the head of the find page.
dravel::Card* makeSearchCard(dravel::TextField& field, QWidget* parent) {
    auto* card = new dravel::Card(parent);
    card->setObjectName(u"find"_s);
    auto* line = new QHBoxLayout(card);
    line->setContentsMargins(dravel::Card::iconColumn, Theme::Space::sm, Theme::Space::md, Theme::Space::sm);
    line->setSpacing(dravel::Card::textColumn - dravel::Card::iconColumn - dravel::Card::iconWidth);
    line->addWidget(new dravel::Disc(
        {.diameter = dravel::Card::iconWidth, .symbol = dravel::Symbol::search, .symbolSize = 12}, card));
    field.setFixedHeight(40);
    line->addWidget(&field, 1);
    QObject::connect(&field, &dravel::TextField::focusChanged, card, &dravel::Card::setHighlighted);
    return card;
}

}

FindPage::FindPage(AppModel& model, const dravel::Now& now, QWidget* parent)
    : DravelPage(parent), model_(model), jobs_(model.background()),
      words_(new dravel::TextField(dravel::TextField::Kind::frameless, u"Chercher une tâche…"_s)),
      none_(new dravel::EmptyCard(dravel::Symbol::search, u"Aucune tâche ne contient ces mots."_s, &stage())),
      tasks_(new TaskColumn(*this, model, now)) {
    setObjectName(u"page.find"_s);
    setAccessibleName(u"Recherche"_s);
    words_->setObjectName(u"find.words"_s);
    words_->setAccessibleName(u"Chercher une tâche"_s);
    words_->installEventFilter(this);
    connect(words_, &QLineEdit::textChanged, this, &FindPage::find);
    for (QWidget* card : std::initializer_list<QWidget*>{makeSearchCard(*words_, &stage()), none_, tasks_}) add(card);
    new RefreshWhileVisible(*this, model.changed, [this] { readTasks(); });
    readTasks();
}

void FindPage::begin() {
    reveal(*words_);
    words_->selectAll();
    words_->setFocus(Qt::ShortcutFocusReason);
}

void FindPage::readTasks() {
    using Ready = std::shared_ptr<const TaskFinder>;
    if (finder_ && searched_.sharesAllWith(model_.state().tasks)) return find();
    finder_.reset();
    jobs_.add<Ready>([tasks = model_.state().tasks] { return std::make_shared<const TaskFinder>(tasks); },
                     [this, tasks = model_.state().tasks](dravel::Outcome<Ready> ready) {
                         finder_ = std::get<Ready>(std::move(ready));
                         searched_ = tasks;
                         find();
                     },
                     blink);
}

// Of words that are typed while one search runs, only the last ones are looked for.
void FindPage::find() {
    if (!finder_ || !jobs_.isIdle()) return;
    const auto typed = words_->text();
    jobs_.add<Places>([finder = finder_, words = fromQt(typed)] { return finder->find(words); },
                      [this, typed](const dravel::Outcome<Places>& found) {
                          show(typed, std::get<Places>(found));
                          if (typed != words_->text()) find();
                      },
                      blink);
}

void FindPage::show(const QString& typed, const Places& found) {
    auto groups = foundGroups(searched_, found);
    none_->setVisible(groups.empty() && !typed.trimmed().isEmpty());
    tasks_->setGroups(std::move(groups), model_.state().today);
    tasks_->setSought(SoughtWords(fromQt(typed)));
}

// Down leads from the words to what was found.
bool FindPage::eventFilter(QObject* watched, QEvent* event) {
    if (watched != words_ || event->type() != QEvent::KeyPress) return DravelPage::eventFilter(watched, event);
    const auto key = static_cast<QKeyEvent*>(event)->key();
    if ((key != Qt::Key_Down && key != Qt::Key_Return && key != Qt::Key_Enter) || !tasks_->isVisible()) return false;
    tasks_->setFocus(Qt::TabFocusReason);
    return true;
}

void FindPage::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Escape) return DravelPage::keyPressEvent(event);
    Q_EMIT closed();
}

}
