#pragma once

#include "DravelKit/DravelUI/Theme.h"

class QAction;
class QApplication;
class QWidget;

namespace dravel {

// Once, before the first widget: style, fonts, palette and the accessibility of the painted controls.
void installLook(QApplication&, Appearance);

// Makes Qt's own texts French, those of a field's menu and of file panels, whatever the locale. Before they are shown.
void translateQt(QApplication&);

// Live switching: gives every widget the palette of that appearance; they repaint by themselves at the next
// turn of the event loop.
void setAppearance(Appearance);

// Nothing moves by itself where the desktop does not want it.
void setMotion(bool wanted);
bool animates(const QWidget&);

// Shown in the danger tones ("Supprimer"). Every QMenu is drawn in the look of the kit without further ado.
void markDestructive(QAction&);

}
