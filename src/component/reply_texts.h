#pragma once
#include <string>
#include <string_view>

namespace orvalo::component {

// The texts that the component's members answer with. The client takes several of them apart word
// by word, so their wording is a contract. Pure functions, any thread.

// A text that came from a service, made harmless: white space and control characters become single
// spaces, a word that begins with "To:", "ID:" or "ERR:" (any case) gets a semicolon for its first
// colon, and what exceeds 200 characters is cut off.
std::string PlainWords(std::string_view text);

// "ERR: 202, Not enough credit"; without a message "ERR: 202".
std::string ErrorText(int code, std::string_view message);

// "ID: 0123…": a message that was accepted.
std::string SentText(std::string_view id);

// One recipient of a batch, a line of its own: "ID: 0123… To: 27821110001" or
// "ERR: 208, … To: 27821119900". The number stands as given but for white space, which would end
// it.
std::string BatchSentLine(std::string_view id, std::string_view number);
std::string BatchErrorLine(int code, std::string_view message, std::string_view number);

// "status: 004", and with the amount "status: 004 charge: 0.8". `status` is 0 to 999.
std::string StatusText(int status);
std::string ChargeText(int status, std::string_view charge);

}  // namespace orvalo::component
