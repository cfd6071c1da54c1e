// The network printer over loopback. Every wait is bounded.
#include "preview/listener.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

#include "preview/answer.h"
#include "preview/reader.h"

namespace {

using Stream = std::vector<uint8_t>;

class Sender {
public:
    explicit Sender(uint16_t port) : fd_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        timeval limit{10, 0};
        setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(connect(fd_, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    }
    ~Sender()
    {
        close(fd_);
    }
    Sender(const Sender &) = delete;
    Sender &operator=(const Sender &) = delete;

    void send_bytes(const Stream &bytes)
    {
        EXPECT_EQ(send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }
    int receive_byte()
    {
        uint8_t byte = 0;
        return recv(fd_, &byte, 1, 0) == 1 ? byte : -1;
    }

private:
    int fd_;
};

// Takes one job and returns what it would print.
std::unique_ptr<preview::Reader> take_job(const preview::Listener &listener, const preview::Health &health)
{
    auto reader = std::make_unique<preview::Reader>(preview::Options{});
    Stream answers;
    reader->watch([&](const preview::Command &command) {
        const Stream reply = preview::answer(command, health);
        answers.insert(answers.end(), reply.begin(), reply.end());
    });
    std::string error;
    EXPECT_TRUE(listener.receive_job(
        [&](preview::Bytes bytes, Stream &reply) {
            answers.clear();
            const bool more = reader->feed(bytes);
            reply = answers;
            return more;
        },
        10, error))
        << error;
    reader->watch({});
    reader->finish();
    return reader;
}

}  // namespace

TEST(Listener, TakesJobsOneAfterAnother)
{
    preview::Listener listener;
    std::string error;
    ASSERT_TRUE(listener.open("127.0.0.1:0", error)) << error;
    ASSERT_NE(listener.port(), 0);
    std::thread sender([&] {
        for (const uint8_t rows : {uint8_t{10}, uint8_t{20}, uint8_t{30}}) {
            Sender job(listener.port());
            job.send_bytes({0x1B, 0x4A, rows});
        }
    });
    for (const uint64_t rows : {10U, 20U, 30U}) {
        EXPECT_EQ(take_job(listener, {})->paper().rows(), rows);
    }
    sender.join();
}

TEST(Listener, AnswersStatusRequestsWhileTheJobRuns)
{
    preview::Listener listener;
    std::string error;
    ASSERT_TRUE(listener.open("127.0.0.1:0", error)) << error;
    std::vector<int> replies;
    std::thread sender([&] {
        Sender job(listener.port());
        job.send_bytes({0x10, 0x04, 0x01});
        replies.push_back(job.receive_byte());
        job.send_bytes({0x1B, 0x4A, 5, 0x10, 0x04});
        job.send_bytes({0x04});
        replies.push_back(job.receive_byte());
    });
    EXPECT_EQ(take_job(listener, {.paper_end = true})->paper().rows(), 5U);
    sender.join();
    EXPECT_EQ(replies, (std::vector<int>{0x12, 0x7E}));
}

TEST(Listener, ASilentSenderEndsTheJobAfterTheIdleTime)
{
    preview::Listener listener;
    std::string error;
    ASSERT_TRUE(listener.open("127.0.0.1:0", error)) << error;
    Sender silent(listener.port());
    EXPECT_TRUE(listener.receive_job([](preview::Bytes, Stream &) { return true; }, 1, error));
}

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
