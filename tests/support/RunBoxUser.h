#pragma once
// A user at a run's progress box: at step `cancelAt` (0: never) presses `button`, and answers
// every question with `answer`. All on the box's worker, so the run sees the answer at its
// next section; read what it saw once the box is gone.
#include <string>
#include <vector>

#include "platform/system/MessageBox.h"
#include "ui/RunBoxFrontEnd.h"

namespace docxtest {

struct RunBoxUser : IRunBoxFrontEnd {
  int cancelAt = 0, button = kIdcCancelReport, answer = IDYES;
  int opened = 0, closed = 0, lastStep = 0;
  RunBoxState first;  // as the box opened
  std::vector<std::u16string> percents, steps;

  void BoxOpened(IRunBox&, const RunBoxState& state) override {
    ++opened;
    first = state;
  }
  void BoxChanged(IRunBox& box, const RunBoxState& state) override {
    if (state.barPosition != lastStep) {
      lastStep = state.barPosition;
      percents.push_back(state.percentText);
      steps.push_back(state.stepText);
      if (lastStep == cancelAt) box.Post(button);
    }
    if (!state.question.IsEmpty()) box.Post(answer);
  }
  void BoxClosed(IRunBox&, const RunBoxState&) override { ++closed; }
};

}  // namespace docxtest
