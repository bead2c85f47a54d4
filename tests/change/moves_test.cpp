// SPDX-License-Identifier: Apache-2.0
// Moves from one interface to another, in an order that the document does not say.
#include "moves.h"

#include <gtest/gtest.h>
#include <zarnnetchange/change.h>

#include "support/appliance.h"
#include "wish.h"

using namespace test;

TEST(Moves, AreMadeInOneGoAndOnce) {
  SetUpEth0();
  Shell("sed -i /^await/d /etc/init/dhcp-client.conf");  // nobody leases an address here
  for (const Wish& wish : wishes::kMoves) {
    const bool removes = &wish == &wishes::kMoves.back();
    EXPECT_LE(MakeInOneGo(wish, removes ? ZARNNETCHANGE_NOT_FOUND : ZARNNETCHANGE_DONE), 1);
  }
}
