// The start-up status label's text history: every step writes its trace here as it begins and
// ends; the main window shows the latest text in `LabelOrangeBlock`.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace vela {

class StartupTrace {
 public:
  void Show(const std::string& text) {
    texts_.push_back(text);
    if (on_show_) on_show_(text);
  }
  const std::vector<std::string>& texts() const { return texts_; }
  const std::string& latest() const {
    static const std::string kNone;
    return texts_.empty() ? kNone : texts_.back();
  }
  void set_on_show(std::function<void(const std::string&)> on_show) {
    on_show_ = std::move(on_show);
  }

 private:
  std::vector<std::string> texts_;
  std::function<void(const std::string&)> on_show_;
};

}  // namespace vela
