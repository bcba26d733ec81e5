#pragma once
#include <string>
#include <string_view>

namespace orvalo::platform {

// The proxies that the operator has set in the desktop's own settings: addresses as libcurl takes
// them ("http://host:8080", "socks5h://host:1080"), possibly with credentials in them. Never log
// them.
struct DesktopProxy {
  std::string http;        // for http addresses; empty: none
  std::string https;       // for https addresses; empty: none
  std::string exceptions;  // hosts that are reached directly, joined by commas
  std::string script;      // the address of an automatic proxy script, which then counts alone
};

// Whether the environment (http_proxy, https_proxy, all_proxy) names a proxy for any address. It
// then counts in place of the desktop's settings.
bool HasProxyEnvironment();

// The settings of GNOME and its relatives ("gsettings", org.gnome.system.proxy) or, in a KDE
// session, of KDE ("kioslaverc"). Looking for a proxy in the network ("WPAD") is not followed:
// whoever answers first there would have all traffic. Any thread; starts a program and may take
// some 10 ms (at most 3 s); empty when nothing is set or the desktop has no such settings.
DesktopProxy ReadDesktopProxy();

// The same from the output of "gsettings list-recursively", and from the text of a "kioslaverc".
DesktopProxy ParseGnomeProxy(std::string_view listing);
DesktopProxy ParseKdeProxy(std::string_view file);

}  // namespace orvalo::platform
