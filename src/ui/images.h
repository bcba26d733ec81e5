#pragma once
#include <QIcon>
#include <QPixmap>
#include <QSize>
#include <map>
#include <memory>
#include <string>

#include "platform/resource_container.h"

namespace orvalo::ui {

// What a picture's "currentColor" stands for. The colours are those of the palette in force when
// the picture is drawn, so that icons follow a change between light and dark.
enum class IconTint {
  kText,      // of the control's text; the accent colour's text where the control is checked
  kAccent,    // the accent colour
  kMuted,     // secondary text
  kOnAccent,  // what stands on the accent colour
};

// The icon of a message's status, for Images::Icon.
inline std::string StatusIconName(int status) { return "status/" + std::to_string(status); }

// The icons and pictures of one resource container, SVG, drawn at the exact size and scale they
// are shown at. Created by start-up, outlives every window; main thread. A picture that is missing
// or does not parse is empty.
class Images {
 public:
  explicit Images(const platform::ResourceContainer& container);
  ~Images();
  Images(const Images&) = delete;
  Images& operator=(const Images&) = delete;

  // "images/<name>.svg".
  QIcon Icon(const std::string& name, IconTint tint = IconTint::kText) const;
  QPixmap Pixmap(const std::string& name, QSize size, qreal scale,
                 IconTint tint = IconTint::kText) const;

 private:
  class Picture;

  const platform::ResourceContainer& container_;
  // What has been asked for, with what was drawn of it: windows share their icons.
  mutable std::map<std::string, std::shared_ptr<Picture>> pictures_;
};

}  // namespace orvalo::ui
