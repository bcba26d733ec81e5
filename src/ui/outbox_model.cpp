#include "ui/outbox_model.h"

#include <algorithm>
#include <limits>

#include "app/texts.h"
#include "platform/code_page.h"
#include "ui/images.h"

namespace orvalo::ui {

namespace {

constexpr std::size_t kMostLines = 1'000;  // kept at a time
constexpr std::size_t kTipText = 600;      // characters of a tool tip
constexpr int kTipWord = 60;
constexpr int kReasonTextId = 2267;

QString FirstOf(const std::string& text, std::size_t characters) {
  return Qt8(std::string(platform::FirstCharacters(text, characters)));
}

// The beginning of a text, on one line.
QString OneLine(const std::string& text) {
  QString line = FirstOf(text, OutboxModel::kShownText);
  std::replace_if(
      line.begin(), line.end(),
      [](QChar c) { return c.isSpace() || c.category() == QChar::Other_Control; }, QChar(u' '));
  return line;
}

// A text in a tool tip: not taken for markup, and broken where it is one long word.
QString TipOf(const std::string& text) {
  const QString whole = FirstOf(text, kTipText);
  QString broken;
  broken.reserve(whole.size() + whole.size() / kTipWord);
  int word = 0;
  for (const QChar c : whole) {
    word = c.isSpace() ? 0 : word + 1;
    if (word > kTipWord && !c.isLowSurrogate()) {
      broken.append(u'\n');
      word = 1;
    }
    broken.append(c);
  }
  return QStringLiteral("<p style=\"white-space:pre-wrap\">%1</p>").arg(broken.toHtmlEscaped());
}

}  // namespace

void OutboxModel::SetRowCount(std::size_t rows) {
  Forget();
  const int count =
      static_cast<int>(std::min<std::size_t>(rows, std::numeric_limits<int>::max() - 1));
  if (count == rows_) return;
  if (rows_ == 0 || count == 0) {
    beginResetModel();
    rows_ = count;
    endResetModel();
  } else if (count > rows_) {  // not a reset: the list stays where it was scrolled to
    beginInsertRows({}, rows_, count - 1);
    rows_ = count;
    endInsertRows();
  } else {
    beginRemoveRows({}, count, rows_ - 1);
    rows_ = count;
    endRemoveRows();
  }
}

void OutboxModel::Changed() {
  Forget();
  if (rows_ > 0) Q_EMIT dataChanged(index(0, 0), index(rows_ - 1, kOutboxColumnCount - 1));
}

int OutboxModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : rows_; }

int OutboxModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kOutboxColumnCount;
}

QVariant OutboxModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rows_) return {};
  const auto column = static_cast<OutboxColumn>(index.column());
  if (role == Qt::DecorationRole) {
    return column == OutboxColumn::kTime ? Icon(Line(index.row()).icon) : QVariant();
  }
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole && role != Qt::AccessibleDescriptionRole)
    return {};
  const OutboxLine& line = Line(index.row());
  const std::string& text = line.texts[static_cast<std::size_t>(index.column())];
  if (role == Qt::DisplayRole) return OneLine(text);
  const std::string details = column == OutboxColumn::kStatus ? StatusDetails(line) : std::string();
  if (role == Qt::AccessibleDescriptionRole)
    return details.empty() ? QVariant() : QVariant(Qt8(details));
  if (column == OutboxColumn::kRecipient || column == OutboxColumn::kMessage) return TipOf(text);
  return details.empty() ? QVariant() : QVariant(TipOf(details));
}

// What the status means and, where the gateway has refused, why.
std::string OutboxModel::StatusDetails(const OutboxLine& line) const {
  const std::string& shown = line.texts[static_cast<std::size_t>(OutboxColumn::kStatus)];
  std::string details;
  if (shown == kit_.texts.Load(kFirstStatusNameId + line.icon))
    details = kit_.texts.Load(kFirstStatusDescriptionId + line.icon);
  if (line.reason.empty()) return details;
  if (!details.empty()) details += "\n\n";
  return details + kit_.texts.Format(kReasonTextId, {line.reason}).value_or(line.reason);
}

QVariant OutboxModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= kOutboxColumnCount) return {};
  if (role == Qt::TextAlignmentRole) return int{Qt::AlignLeft | Qt::AlignVCenter};
  if (role != Qt::DisplayRole) return {};
  return Qt8(kit_.texts.Load(kOutboxHeaders[static_cast<std::size_t>(section)].text_id));
}

const OutboxLine& OutboxModel::Line(int row) const {
  const auto known = lines_.find(row);
  if (known != lines_.end()) return known->second;
  if (lines_.size() >= kMostLines) lines_.clear();
  return lines_.emplace(row, source_ ? source_(static_cast<std::size_t>(row)) : OutboxLine())
      .first->second;
}

const QIcon& OutboxModel::Icon(std::int32_t status) const {
  QIcon& icon = icons_[static_cast<std::size_t>(std::clamp(status, 0, kSmsStatusCount - 1))];
  if (icon.isNull()) icon = kit_.images.Icon(StatusIconName(status));
  return icon;
}

}  // namespace orvalo::ui
