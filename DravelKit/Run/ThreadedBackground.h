#pragma once

#include "DravelKit/Run/Background.h"
#include "DravelKit/Run/MainLoop.h"

#include <chrono>
#include <memory>

namespace dravel {

// A thread per job. At destruction every job is asked to stop and joined; one that has not ended within a second is
// left behind, and what it comes to is dropped.
class ThreadedBackground final : public Background {
  public:
    explicit ThreadedBackground(MainLoop&, std::chrono::milliseconds patience = std::chrono::seconds(1));
    ~ThreadedBackground() override;

  protected:
    void start(Work) override;

  private:
    struct Jobs;
    std::shared_ptr<Jobs> jobs_;
    std::chrono::milliseconds patience_;
};

}
