#include "floor_client.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <random>
#include <stdexcept>

namespace orvalo::bench {

namespace {

std::size_t Append(char* data, std::size_t size, std::size_t count, void* reply) {
  static_cast<std::string*>(reply)->append(data, size * count);
  return size * count;
}

}  // namespace

FloorClient::FloorClient(const std::string& url, const std::string& user)
    : easy_(curl_easy_init()), url_(url), next_key_(std::random_device()()) {
  next_key_ <<= 32;
  curl_easy_setopt(easy_, CURLOPT_WRITEFUNCTION, Append);
  curl_easy_setopt(easy_, CURLOPT_WRITEDATA, &reply_);
  curl_easy_setopt(easy_, CURLOPT_TCP_NODELAY, 1L);
  curl_easy_setopt(easy_, CURLOPT_NOSIGNAL, 1L);
  const nlohmann::json login{{"client_id", "bench"}, {"user", user}, {"password", "bench"}};
  token_ = nlohmann::json::parse(Post("/v1/session", login.dump())).at("token").get<std::string>();
  authorisation_ = "Authorization: Bearer " + token_;
}

FloorClient::~FloorClient() { curl_easy_cleanup(easy_); }

const std::string& FloorClient::Post(const std::string& path, const std::string& body) {
  char key[64];
  std::snprintf(key, sizeof key, "Idempotency-Key: %032llx", next_key_++);
  curl_slist* headers = curl_slist_append(nullptr, "Content-Type: application/json");
  headers = curl_slist_append(headers, key);
  if (!authorisation_.empty()) headers = curl_slist_append(headers, authorisation_.c_str());
  curl_easy_setopt(easy_, CURLOPT_POSTFIELDS, body.c_str());
  curl_easy_setopt(easy_, CURLOPT_POSTFIELDSIZE, static_cast<long>(body.size()));
  return Perform(path, headers);
}

const std::string& FloorClient::Get(const std::string& path) {
  curl_easy_setopt(easy_, CURLOPT_HTTPGET, 1L);
  return Perform(path, curl_slist_append(nullptr, authorisation_.c_str()));
}

const std::string& FloorClient::Perform(const std::string& path, curl_slist* headers) {
  reply_.clear();
  curl_easy_setopt(easy_, CURLOPT_URL, (url_ + path).c_str());
  curl_easy_setopt(easy_, CURLOPT_HTTPHEADER, headers);
  const CURLcode code = curl_easy_perform(easy_);
  curl_slist_free_all(headers);
  long status = 0;
  curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &status);
  if (code != CURLE_OK || status != 200)
    throw std::runtime_error("the floor's request failed: " + reply_);
  return reply_;
}

}  // namespace orvalo::bench
