// Draws every page of the window into PNG files, to be looked at beside the design.
#include "DravelKit/DravelUI/Look.h"
#include "Tacla/MainWindow/HeadlessSnapshot.h"
#include "Tacla/MainWindow/MainView.h"
#include "Tacla/MainWindow/Pages/TaskColumn.h"
#include "tests/support/ModelWorld.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEventLoop>
#include <QLineEdit>
#include <QMenu>
#include <QTimer>

#include <cstdio>

namespace {

using namespace tacla;
namespace fs = std::filesystem;

constexpr const char* sample = "- [ ] ❗ Déclarer le chiffre d'affaires à l'Urssaf · 2026-11-18\n"
                               "- [ ] Relancer Atelier Nord pour l'acompte · 2026-11-20 14:00 · due 2026-11-12\n"
                               "- [ ] Répondre à l'imprimeur sur les épreuves · 2026-11-24 09:15\n"
                               "- [x] Poster le colis pour Brasserie Lafon · 2026-11-24 08:30 · ✅ 2026-11-24\n"
                               "- [x] Commander du papier à en-tête · 2026-11-24 · ✅ 2026-11-24\n"
                               "- [ ] ❗ Envoyer la facture de novembre à Studio Merle · 2026-11-24\n"
                               "- [ ] Relire le contrat de maintenance · 2026-11-24 · due 2026-11-17\n"
                               "- [ ] Appeler Camille au sujet des maquettes · 2026-11-24 11:30\n"
                               "- [ ] Livrer la page d'accueil à la Librairie Quai Sud · 2026-11-24 16:00\n"
                               "- [ ] Préparer le devis de la Maison Perrin · 2026-11-25\n"
                               "- [ ] Visio avec la comptable · 2026-11-25 09:30\n"
                               "- [ ] ❗ Rendre les visuels du salon · 2026-11-26 18:00\n"
                               "- [ ] Payer la cotisation foncière · 2026-11-30\n"
                               "- [ ] Classer les notes de frais d'octobre · 2026-11-30 · due 2026-11-09\n"
                               "- [ ] Rendez-vous à la banque · 2026-12-01 14:15\n"
                               "- [ ] Mettre à jour le portfolio\n"
                               "- [x] Rappeler le plombier de l'atelier · 2026-11-23 · ✅ 2026-11-24\n"
                               "- [x] Valider la charte de l'Atelier Nord · 2026-11-23 11:00 · ✅ 2026-11-23\n"
                               "- [x] Racheter des cartouches d'encre · ✅ 2026-11-23\n"
                               "- [x] Envoyer les épreuves à l'imprimeur · 2026-11-19 17:00 · ✅ 2026-11-20\n"
                               "- [x] Déjeuner avec Léo · 2026-11-20 12:30 · ✅ 2026-11-20\n"
                               "- [x] Archiver le projet Librairie Quai Sud · 2026-11-20 · ✅ 2026-11-20\n";

constexpr const char* odd =
    "- [ ] ❗ Relancer la Librairie Quai Sud pour le solde de la refonte du site et la maintenance de l'année "
    "prochaine, "
    "puis classer le dossier · 2026-11-24 09:15 · due 2026-11-12\n"
    "- [ ] Fêter ça 🎉👩‍👩‍👧‍👦 avec 日本の友達 et <b>R&D</b> · 2026-11-24\n"
    "- [ ] לקנות לחם וחלב 24 במכולת · 2026-11-24 18:00\n"
    "- [ ] Anticonstitutionnellementanticonstitutionnellementanticonstitutionnellementanticonstitutionnellementanti "
    "· 2026-11-24\n";

DesktopActions actions() {
    DesktopActions none;
    none.version = "1.0";
    none.home = "/home/camille";
    none.checkForUpdates = [] {};
    return none;
}

struct Studio {
    explicit Studio(const char* tasks) : world("2026-11-24 10:40", tasks) {
        world.model.setCalendarSync(true);
        world.start();
        world.loop.advance(std::chrono::seconds(1));
    }
    void draw(const fs::path& path, const Snapshot& wanted) {
        saveSnapshot(world.model, actions(), path, wanted, [this] { return world.loop.now(); });
    }
    testing::ModelWorld world;
};

// Gives timers and animations their time.
void settle(int milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

void drawStates(const fs::path& folder) {
    dravel::setAppearance(dravel::Appearance::Light);
    Studio studio(sample);
    MainView view(studio.world.model, actions(), [&] { return studio.world.loop.now(); });
    view.resize(980, 1400);
    view.show();
    view.activateWindow();
    settle(50);
    const auto save = [&](const char* name) {
        settle(300);
        view.grab().save(QString::fromStdString(folder / name));
    };
    auto* column = view.findChild<TaskColumn*>();
    const auto& rows = column->builtRows();
    rows.at(11)->startEditing();
    rows.at(1)->startEditing();
    save("editing.png");
    column->focusRow(4, TaskRow::Stop::check, Qt::TabFocusReason);
    for (const char* name : {"add.hasTime", "add.strong"})
        view.findChild<QAbstractButton*>(QLatin1StringView(name))->click();
    save("focus.png");
    rows.at(4)->openMenu();
    settle(50);
    rows.at(4)->findChild<QMenu*>()->grab().save(QString::fromStdString(folder / "menu.png"));
    save("menu-open.png");
    rows.at(4)->findChild<QMenu*>()->close();
    fs::remove(studio.world.file);
    studio.world.calendar.failure = "la connexion à Internet semble interrompue";
    studio.world.model.sync();
    studio.world.loop.runPosted();
    studio.world.model.reload();
    view.findChild<QLineEdit*>(QStringLiteral("add.title"))->setFocus();
    dravel::setAppearance(dravel::Appearance::Dark);
    save("problems-dark.png");
}

void drawAll(const fs::path& folder) {
    Studio full(sample), none(""), strange(odd);
    for (const bool dark : {false, true}) {
        const std::string look = dark ? "-dark.png" : "-light.png";
        for (const auto section : sections)
            full.draw(folder / (std::string(rawValue(section)) + look),
                      {.dark = dark, .section = section, .height = section == Section::settings ? 942 : 720});
        none.draw(folder / ("late-empty" + look), {.dark = dark, .section = Section::late});
        none.draw(folder / ("today-empty" + look), {.dark = dark});
        strange.draw(folder / ("odd" + look), {.dark = dark});
    }
    full.draw(folder / "today-full.png", {.height = 1316});
    full.draw(folder / "today-min.png", {.width = 820, .height = 560});
    full.draw(folder / "today-2x.png", {.scale = 2});
    full.draw(folder / "today-1.25x.png", {.scale = 1.25});
    full.draw(folder / "today-wide.png", {.width = 1500, .height = 900});
    Studio first("");
    first.world.model.beginOnboarding();
    first.draw(folder / "welcome.png", {});
    first.draw(folder / "welcome-dark.png", {.dark = true});
}

}

int main(int argc, char** argv) {
    if (argc < 2) return std::fputs("usage: tacla_pictures FOLDER\n", stderr), 2;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("TZ", "Europe/Paris");
    QApplication application(argc, argv);
    dravel::installLook(application, dravel::Appearance::Light);
    fs::create_directories(argv[1]);
    drawAll(argv[1]);
    drawStates(argv[1]);
}
