#pragma once
#include <string>

#include "service/accounts.h"
#include "service/vouchers.h"

namespace orvalo::service {

// Lays out what a first try needs: the account "demo" (password "demo", demo@example.org, credit
// 1000) and a few vouchers, where they are missing. Returns what there is to try, for people.
std::string LayOutDemoData(Accounts& accounts, Vouchers& vouchers);

}  // namespace orvalo::service
