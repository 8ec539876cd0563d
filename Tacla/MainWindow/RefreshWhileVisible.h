#pragma once

#include "DravelKit/Foundation/Signal.h"

#include <QEvent>
#include <QWidget>

#include <functional>

namespace tacla {

// Keeps a view in step with the model: at once while it shows, else when it is shown next.
class RefreshWhileVisible final : public QObject {
  public:
    RefreshWhileVisible(QWidget& view, dravel::Signal<>& changed, std::function<void()> refresh)
        : QObject(&view), view_(view), refresh_(std::move(refresh)),
          connection_(changed.connect([this] { modelChanged(); })) {
        view.installEventFilter(this);
    }

  protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Show && stale_) refreshNow();
        return false;
    }

  private:
    void modelChanged() {
        stale_ = true;
        if (view_.isVisible()) refreshNow();
    }
    void refreshNow() {
        stale_ = false;
        refresh_();
    }

    QWidget& view_;
    std::function<void()> refresh_;
    bool stale_ = false;
    dravel::Connection connection_;
};

}
