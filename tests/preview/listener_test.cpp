// Opening a port by its address. What happens there is tested through the tool, in test_life.py.
#include "preview/listener.h"

#include <gtest/gtest.h>

TEST(Listener, BadAddressesAreRefusedInWords)
{
    for (const char *address : {"", "9100", ":9100", "127.0.0.1:", "127.0.0.1:x", "127.0.0.1:99999999999"}) {
        preview::Listener listener;
        std::string error;
        EXPECT_FALSE(listener.open(address, error)) << address;
        EXPECT_FALSE(error.empty()) << address;
    }
}

TEST(Listener, APortInUseIsReported)
{
    preview::Listener first;
    preview::Listener second;
    std::string error;
    ASSERT_TRUE(first.open("127.0.0.1:0", error));
    EXPECT_FALSE(second.open(first.address(), error));
}
