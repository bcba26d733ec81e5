#pragma once
#include <QTranslator>
#include <functional>
#include <map>
#include <string>

namespace orvalo {
class Texts;
}

namespace orvalo::ui {

// The words that are Qt's own (the buttons of message boxes, the menus of fields and scroll bars,
// the file dialog) in the language of `texts`: ids 2016 to 2149, whose texts in the program's own
// container are Qt's, letter by letter. What the language lacks stays as Qt has it. In force from
// its creation to its end; main thread.
class QtTexts : public QTranslator {
 public:
  // `texts` must outlive the object; its language may change at any time.
  explicit QtTexts(const Texts& texts);
  ~QtTexts() override;
  QtTexts(const QtTexts&) = delete;
  QtTexts& operator=(const QtTexts&) = delete;

  // --- QTranslator
  QString translate(const char* context, const char* source, const char* disambiguation,
                    int count) const override;
  bool isEmpty() const override { return false; }

 private:
  const Texts& texts_;
  std::map<std::string, int, std::less<>> ids_;  // by Qt's text
};

}  // namespace orvalo::ui
