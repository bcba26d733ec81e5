#pragma once
#include <string>
#include <vector>

namespace orvalo::service {

// How the service speaks to a Kannel engine: its smsboxes take the messages, its bearerbox tells
// how it is.
struct KannelOptions {
  std::vector<std::string> urls;  // of the smsboxes' "sendsms"; one is enough
  std::string user, password;     // of the engine's "sendsms-user"
  std::string status_url;   // of the bearerbox's "status.xml", with its password; may be empty
  std::string smsc;         // the link to send over; empty: the engine's routing
  std::string sender;       // for messages that bring none
  std::string authorities;  // a file of certificate authorities; empty for the system's
  std::string report_url;   // where the engine reaches this service: "http://127.0.0.1:8481"
  int connections = 16;
  int receivers = 100;           // in one request at most
  int window = 5'000;            // parts that the engine has and the network not yet
  int backlog = 200'000;         // parts that wait here; beyond it nothing more is accepted
  int validity_minutes = 2'880;  // how long the network may try
  int silence_minutes = 10;      // an idle engine that has reported nothing for so long has lost it
  int reply_seconds = 30;        // to wait for the engine's reply
};

}  // namespace orvalo::service
