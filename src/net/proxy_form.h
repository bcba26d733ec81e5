#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvalo::platform {
class MessageBoxes;
}

namespace orvalo {

class AppSettings;
class ProxySettings;
class Texts;

// What the controls of the proxy settings hold.
struct ProxyValues {
  std::optional<std::size_t> entry;  // of the mode list; nothing when none is chosen
  std::string host, port, user, password;
  bool operator==(const ProxyValues&) const = default;
};

// The controls of the proxy settings, as far as their logic needs them. Main thread.
class ProxyView {
 public:
  virtual ~ProxyView() = default;
  virtual void ListProxyModes(const std::vector<std::string>& names) = 0;
  // Must not report the entry back as chosen.
  virtual void ShowProxy(const ProxyValues& values) = 0;
  virtual ProxyValues Proxy() const = 0;  // as they stand now
  virtual void EnableProxyFields(bool enabled) = 0;
  // Of the mode chosen; a view without a description leaves it out.
  virtual void ShowProxyDescription(const std::string& text) = 0;
  virtual void ShowWaitCursor(bool shown) = 0;
};

// The rules of the proxy settings: when they are stored, handed to the gateway component, and
// tested. One for each place where the controls stand. Main thread.
class ProxyForm {
 public:
  enum class Place {
    kDialog,      // "Proxy Settings": whatever is stored is tested as well
    kOptionsPage  // tested when working online, and on demand
  };
  static constexpr std::size_t kFieldLength = 254;  // characters that count of each field

  // All of it must outlive the form.
  struct Parts {
    AppSettings& settings;
    ProxySettings& proxy;
    const Texts& texts;
    platform::MessageBoxes& boxes;
    ProxyView& view;
  };

  ProxyForm(const Parts& parts, Place place) : parts_(parts), place_(place) {}

  // Fills the controls from the settings. A stored mode that the list does not have leaves it
  // without a chosen entry; the mode then stays as stored until the operator chooses one.
  void SetUp();

  // Fills the controls anew when another form has changed the settings; what stands edited here
  // stays otherwise.
  void Refresh();

  void ModeChosen() { Update(false); }  // stored and applied at once
  void Apply() { Update(false); }       // "OK", and when the options page is applied
  void Test() { Update(true); }         // stores, applies and tests, changed or not

  // Whether `text` may stand in the port field: a port, or nothing.
  static bool AcceptsPort(std::string_view text);

 private:
  void Update(bool test);
  ProxyValues Read() const;
  ProxyValues FromSettings() const;
  bool Differs(const ProxyValues& values, std::int32_t mode) const;
  std::int32_t Mode(const ProxyValues& values) const;

  Parts parts_;
  Place place_;
  ProxyValues known_;  // the settings when they were last read or stored here
};

}  // namespace orvalo
