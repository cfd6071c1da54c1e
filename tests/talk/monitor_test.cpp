// What the port monitor sends, says and decides, step by step on a clock of the test's own.
#include "talk/monitor.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;
using talk::phase;

const Bytes ask_paper = {0x10, 0x04, 4};
const Bytes ask_offline = {0x10, 0x04, 2};
const Bytes ask_error = {0x10, 0x04, 3};
const Bytes greeting = {0x1D, 0x61, 0x0E, 0x1D, 0x72, 1};
const Bytes order = {0x1D, 0x72, 1};
const Bytes silence = {0x1D, 0x61, 0};
const Bytes clear = {0x10, 0x14, 8, 1, 3, 20, 1, 6, 2, 8};

const Bytes good = {0x12};
const Bytes in_order = {0x00};
const Bytes paper_out_question = {0x7E};
const Bytes automatic_good = {0x10, 0, 0, 0};
const Bytes automatic_paper_out = {0x10, 0, 0x0F, 0};
const Bytes automatic_cover_open = {0x30, 0, 0, 0};
const Bytes automatic_cutter = {0x10, 0x08, 0, 0};

Bytes operator+(const Bytes &left, const Bytes &right)
{
    Bytes both = left;
    both.insert(both.end(), right.begin(), right.end());
    return both;
}

class Monitor : public testing::Test {
protected:
    talk::monitor it;
    int64_t clock = 1000000;

    void start(const char *reasons = nullptr)
    {
        talk::start_monitor(it, reasons, clock);
    }

    Bytes sent()
    {
        Bytes bytes(it.out, it.out + it.out_length);
        it.out_length = 0;
        return bytes;
    }

    std::string said()
    {
        std::string lines(it.log, it.log_length);
        it.log_length = 0;
        return lines;
    }

    void hear(const Bytes &bytes)
    {
        talk::hear_printer(it, bytes.data(), bytes.size(), clock);
    }

    // Time passes; the monitor is called at each of its deadlines, as the loop does.
    void pass(int64_t milliseconds)
    {
        const int64_t end = clock + milliseconds;
        for (int64_t at = talk::next_deadline(it); at >= 0 && at <= end; at = talk::next_deadline(it)) {
            ASSERT_GT(++wake_ups, 0);
            ASSERT_LT(wake_ups, 1000000) << "it wakes up again and again";
            clock = std::max(clock, at);
            talk::watch_clock(it, clock);
            if (it.now == phase::over) {
                break;
            }
            ASSERT_FALSE(talk::next_deadline(it) == at && it.out_length == 0 && at <= clock) << "a deadline that stays";
            keep();
        }
        clock = std::max(clock, end);
    }

    // What was sent while time passed.
    Bytes kept;
    void keep()
    {
        const Bytes bytes = sent();
        kept.insert(kept.end(), bytes.begin(), bytes.end());
    }
    Bytes sent_meanwhile()
    {
        keep();
        Bytes bytes;
        bytes.swap(kept);
        return bytes;
    }

    void answer_questions(const Bytes &answer = {0x12})
    {
        for (int i = 0; i < 3; i++) {
            hear(answer);
        }
        sent();
    }

    void reach_job()
    {
        start();
        answer_questions();
        hear(automatic_good + in_order);
        ASSERT_EQ(it.now, phase::job);
        sent();
        said();
    }

    void reach_ending()
    {
        reach_job();
        talk::end_job(it, clock);
        ASSERT_EQ(it.now, phase::ending);
        sent();
    }

    int wake_ups = 0;
};

// In front of the first byte.

TEST_F(Monitor, AsksOneRealTimeQuestionAfterTheOther)
{
    start();
    EXPECT_EQ(sent(), ask_paper);
    hear(good);
    EXPECT_EQ(sent(), ask_offline);
    hear(good);
    EXPECT_EQ(sent(), ask_error);
    hear(good);
    EXPECT_EQ(sent(), greeting);
    EXPECT_EQ(it.now, phase::greeting);
    hear(automatic_good);
    EXPECT_EQ(it.now, phase::greeting);
    hear(in_order);
    EXPECT_EQ(it.now, phase::job);
    EXPECT_EQ(sent(), Bytes());
    EXPECT_EQ(said(), "") << "a good printer is not worth a line";
}

TEST_F(Monitor, LetsTheJobFlowAfter300MillisecondsWhenThePrinterIsMute)
{
    start();
    sent();
    pass(299);
    EXPECT_EQ(it.now, phase::asking);
    EXPECT_EQ(sent_meanwhile(), Bytes());
    pass(1);
    EXPECT_EQ(it.now, phase::job);
    EXPECT_EQ(sent_meanwhile(), ask_offline + ask_error + greeting) << "the rest of the questions, for a slow printer";
}

TEST_F(Monitor, LetsTheJobFlowAfter300MillisecondsWhenOnlyOrdersGoUnanswered)
{
    start();
    pass(100);
    answer_questions();
    EXPECT_EQ(it.now, phase::greeting);
    pass(199);
    EXPECT_EQ(it.now, phase::greeting);
    pass(1);
    EXPECT_EQ(it.now, phase::job);
}

TEST_F(Monitor, HoldsTheJobWhileThePaperIsOutAndSaysSo)
{
    start();
    hear(paper_out_question);
    hear({0x32});
    EXPECT_EQ(said(), "") << "not before all is known";
    hear(good);
    EXPECT_EQ(said(), "STATE: +media-empty-error\nINFO: Out of paper\n");
    EXPECT_EQ(it.now, phase::held);
    sent();
    pass(10 * 60 * 1000);
    EXPECT_EQ(it.now, phase::over) << "it did not answer any more";
    EXPECT_EQ(it.status, 1);
    EXPECT_EQ(said(), "ERROR: The printer does not answer any more\n");
}

TEST_F(Monitor, HoldsTheJobAsLongAsItTakes)
{
    start();
    hear(paper_out_question);
    hear({0x32});
    hear(good);
    said();
    for (int i = 0; i < 3 * 3600; i++) {
        pass(1000);
        hear(paper_out_question);
        hear({0x32});
        hear(good);
        ASSERT_EQ(it.now, phase::held);
        sent();
    }
    EXPECT_EQ(said(), "") << "told once";
    pass(500);
    answer_questions();
    EXPECT_EQ(it.now, phase::greeting);
    EXPECT_EQ(said(), "STATE: -media-empty-error\nINFO: Printing\n");
}

TEST_F(Monitor, AsksAHeldPrinterTwiceASecond)
{
    start();
    answer_questions({0x7E});
    EXPECT_EQ(it.now, phase::held);
    for (int i = 0; i < 10; i++) {
        sent_meanwhile();
        pass(500);
        EXPECT_EQ(sent_meanwhile(), ask_paper) << i;
        answer_questions({0x7E});
    }
}

TEST_F(Monitor, SendsNothingButRealTimeRequestsToAPrinterThatCannotPrint)
{
    start();
    answer_questions({0x7E});
    sent_meanwhile();
    for (int i = 0; i < 100; i++) {
        pass(250);
        const Bytes bytes = sent_meanwhile();
        for (size_t at = 0; at < bytes.size(); at += 3) {
            EXPECT_EQ(bytes[at], 0x10);
            EXPECT_EQ(bytes[at + 1], 0x04);
        }
        hear({0x7E});
    }
    EXPECT_EQ(it.now, phase::held);
}

TEST_F(Monitor, HoldsWhenTheFirstAnswerSaysOutAndTheOthersDoNotCome)
{
    start();
    hear(paper_out_question);
    pass(300);
    EXPECT_EQ(it.now, phase::held);
    EXPECT_EQ(said(), "STATE: +media-empty-error\nINFO: Out of paper\n");
}

TEST_F(Monitor, HoldsWhenThePaperEndsDuringTheGreeting)
{
    start();
    answer_questions();
    hear(automatic_paper_out);
    EXPECT_EQ(it.now, phase::held);
    pass(0);
    EXPECT_EQ(sent_meanwhile(), ask_paper);
    answer_questions();
    EXPECT_EQ(it.now, phase::greeting);
    hear(in_order + in_order);
    EXPECT_EQ(it.now, phase::job);
}

TEST_F(Monitor, ClearsThePrintersBufferInFrontOfAllElse)
{
    it.clears_first = true;
    start();
    EXPECT_EQ(sent(), clear + ask_paper);
    hear({0x37, 0x25, 0x00});
    answer_questions();
    EXPECT_EQ(it.now, phase::greeting);
    EXPECT_EQ(it.orders_open, 1) << "the answer to the clear is no ordered one";
}

TEST_F(Monitor, SendsNothingOfItsOwnWithoutABackChannel)
{
    it.has_back_channel = false;
    it.clears_first = true;
    start();
    EXPECT_EQ(it.now, phase::job);
    talk::end_job(it, clock);
    EXPECT_EQ(sent(), Bytes());
    EXPECT_EQ(it.now, phase::over);
    EXPECT_EQ(it.status, 0);
    EXPECT_TRUE(it.left_clean);
    EXPECT_EQ(said(), "DEBUG: klovstatus: the printer does not answer; nobody knows when the job is printed\n");
}

TEST_F(Monitor, PassesOverAQuestionThatOnlyOthersAreAnsweredOf)
{
    start();
    hear(paper_out_question);
    pass(300);
    ASSERT_EQ(it.now, phase::held);
    sent_meanwhile();
    pass(1700);
    EXPECT_EQ(sent_meanwhile(), ask_error) << "the second was passed over, the third asked";
    pass(2000);
    EXPECT_EQ(sent_meanwhile(), ask_paper) << "the third as well: the round is over, and the next begins";
    hear(good);
    EXPECT_EQ(it.now, phase::greeting) << "one answer is the whole round";
}

// In mid job.

TEST_F(Monitor, SendsNothingWhileTheJobFlows)
{
    reach_job();
    hear(automatic_paper_out);
    pass(3600 * 1000);
    hear(automatic_cover_open + automatic_good + in_order + good);
    pass(3600 * 1000);
    EXPECT_EQ(sent_meanwhile(), Bytes());
    EXPECT_EQ(it.now, phase::job);
}

TEST_F(Monitor, EachReasonIsAddedWhenItBeginsAndRemovedWhenItEnds)
{
    reach_job();
    hear(automatic_paper_out);
    EXPECT_EQ(said(), "STATE: +media-empty-error\nINFO: Out of paper\n");
    hear(automatic_paper_out);
    EXPECT_EQ(said(), "");
    hear(automatic_cover_open);
    EXPECT_EQ(said(), "STATE: -media-empty-error\nSTATE: +cover-open-error\nINFO: Cover is open\n");
    hear(automatic_cutter);
    EXPECT_EQ(said(), "STATE: -cover-open-error\nSTATE: +other-error\nINFO: The cutter is jammed\n");
    hear({0x10, 0x40, 0, 0});
    EXPECT_EQ(said(), "INFO: The printer reports an error that it can recover from\n");
    hear({0x10, 0x20, 0, 0});
    EXPECT_EQ(said(), "INFO: The printer reports an error: switch it off and on again\n");
    hear({0x10, 0, 0x03, 0});
    EXPECT_EQ(said(), "STATE: +media-low-warning\nSTATE: -other-error\nINFO: Printing\n");
    hear(automatic_good);
    EXPECT_EQ(said(), "STATE: -media-low-warning\n");
}

TEST_F(Monitor, SpeaksChinese)
{
    it.speaks = talk::language::chinese;
    reach_job();
    hear(automatic_paper_out);
    EXPECT_EQ(said(), "STATE: +media-empty-error\nINFO: 缺纸\n");
}

TEST_F(Monitor, RemovesWhatTheSchedulerShowsFromBefore)
{
    start("cups-waiting-for-job-completed,media-empty-error, other-error");
    EXPECT_EQ(said(), "");
    answer_questions();
    EXPECT_EQ(said(), "STATE: -media-empty-error\nSTATE: -other-error\n");
}

TEST_F(Monitor, TakesNoPartOfAnotherReasonForItsOwn)
{
    start("media-empty-error-report,xother-error,other-errors");
    answer_questions();
    EXPECT_EQ(said(), "");
}

TEST_F(Monitor, RemovesOldReasonsOfAPrinterThatSaysNothing)
{
    start("media-empty-error");
    pass(300);
    talk::end_job(it, clock);
    EXPECT_NE(said().find("STATE: -media-empty-error\n"), std::string::npos);
}

TEST_F(Monitor, AnswersCountWheneverTheyCome)
{
    start();
    pass(5000);
    ASSERT_EQ(it.now, phase::job);
    sent_meanwhile();
    hear(good);
    hear({0x16});
    hear(good);
    EXPECT_EQ(said(), "STATE: +cover-open-error\nINFO: Cover is open\n");
    EXPECT_EQ(sent(), Bytes()) << "nothing of ours within the job";
    hear(automatic_good + in_order);
    EXPECT_EQ(said(), "STATE: -cover-open-error\nINFO: Printing\n");
    talk::end_job(it, clock);
    EXPECT_EQ(it.now, phase::ending) << "not mute after all";
    hear(in_order);
    EXPECT_EQ(it.now, phase::over);
}

// Behind the last byte.

TEST_F(Monitor, AsksInOrderBehindTheLastByteAndIsDoneWithTheAnswer)
{
    reach_job();
    talk::end_job(it, clock);
    EXPECT_EQ(sent(), order + silence + ask_paper);
    hear(automatic_good);
    hear(good);
    EXPECT_EQ(it.now, phase::ending) << "only the ordered answer counts";
    hear(in_order);
    EXPECT_EQ(it.now, phase::over);
    EXPECT_EQ(it.status, 0);
    EXPECT_TRUE(it.left_clean);
}

TEST_F(Monitor, AMutePrinterIsNotWaitedFor)
{
    start();
    pass(300);
    sent_meanwhile();
    talk::end_job(it, clock);
    EXPECT_EQ(it.now, phase::over);
    EXPECT_EQ(it.status, 0);
    EXPECT_EQ(sent(), silence);
    EXPECT_EQ(said(), "DEBUG: klovstatus: the printer does not answer; nobody knows when the job is printed\n");
}

TEST_F(Monitor, WaitsForPaperBehindTheLastByteAsLongAsItTakes)
{
    reach_ending();
    hear(automatic_paper_out);
    pass(3 * 3600 * 1000);
    EXPECT_EQ(it.now, phase::ending) << "the questions wait behind a full buffer";
    hear(automatic_good);
    pass(1000);
    hear(in_order);
    EXPECT_EQ(it.now, phase::over);
    EXPECT_EQ(it.status, 0);
}

TEST_F(Monitor, SaysThatItWaitsForTheEnd)
{
    reach_ending();
    answer_questions();
    pass(500);
    EXPECT_EQ(said(), "INFO: Waiting for the printer to finish\n");
    answer_questions();
    pass(500);
    EXPECT_EQ(said(), "");
}

TEST_F(Monitor, APrinterThatFallsSilentIsGoneAfterAMinute)
{
    reach_ending();
    hear(good);
    pass(59999);
    EXPECT_EQ(it.now, phase::ending);
    pass(1);
    EXPECT_EQ(it.now, phase::over);
    EXPECT_EQ(it.status, 1);
    EXPECT_FALSE(it.left_clean);
    EXPECT_NE(said().find("ERROR: The printer does not answer any more\n"), std::string::npos);
}

TEST_F(Monitor, APrinterWithoutOrderedAnswersIsDoneWhenItWasReadyThreeTimesOverTwoSeconds)
{
    start();
    answer_questions();
    pass(300);
    ASSERT_EQ(it.now, phase::job);
    talk::end_job(it, clock);
    sent_meanwhile();
    const int64_t end = clock;
    while (it.now == phase::ending && clock < end + 10000) {
        answer_questions();
        pass(500);
    }
    EXPECT_EQ(it.now, phase::over);
    EXPECT_EQ(it.status, 0);
    EXPECT_GE(clock - end, 2000);
    EXPECT_LE(clock - end, 3000);
}

TEST_F(Monitor, APrinterWithoutOrderedAnswersThatIsNotReadyIsWaitedFor)
{
    start();
    answer_questions();
    pass(300);
    talk::end_job(it, clock);
    sent_meanwhile();
    for (int i = 0; i < 20; i++) {
        answer_questions(i % 3 == 2 ? Bytes{0x7E} : Bytes{0x12});
        pass(500);
        ASSERT_EQ(it.now, phase::ending) << "ready twice, then not";
    }
}

TEST_F(Monitor, APrinterThatAnswersInOrderIsNotDoneByBeingReady)
{
    reach_ending();
    for (int i = 0; i < 120; i++) {
        answer_questions();
        pass(500);
    }
    EXPECT_EQ(it.now, phase::ending);
}

TEST_F(Monitor, AnOrderedAnswerThatNeverComesThoughThePrinterIsReadyMeansALostJob)
{
    reach_ending();
    for (int i = 0; i < 700 && it.now == phase::ending; i++) {
        answer_questions();
        pass(500);
    }
    EXPECT_EQ(it.now, phase::over);
    EXPECT_EQ(it.status, 1);
}

TEST_F(Monitor, AnAnswerToTheGreetingAtTheEndIsNotTakenForTheLastOne)
{
    start();
    answer_questions();
    pass(300);
    talk::end_job(it, clock);
    sent_meanwhile();
    hear(in_order);
    EXPECT_EQ(it.now, phase::ending);
    EXPECT_EQ(sent(), order) << "one more, should the greeting's have been lost";
    hear(in_order);
    EXPECT_EQ(it.now, phase::over);
    EXPECT_EQ(it.status, 0);
}

TEST_F(Monitor, NoiseDoesNotEndTheJob)
{
    reach_ending();
    hear({0xFF, 0x00, 0x0F, 0x00});
    EXPECT_EQ(it.now, phase::ending) << "the rest of a damaged automatic status";
    answer_questions();
    pass(500);
    const Bytes again = sent_meanwhile();
    EXPECT_EQ(again, order + ask_paper) << "asked again, once";
    answer_questions();
    pass(500);
    EXPECT_EQ(sent_meanwhile(), ask_paper);
    hear(in_order);
    EXPECT_EQ(it.now, phase::over);
}

TEST_F(Monitor, ALostConnectionIsAFailure)
{
    reach_job();
    talk::lose_connection(it);
    EXPECT_EQ(it.now, phase::over);
    EXPECT_EQ(it.status, 1);
    EXPECT_FALSE(it.left_clean);
    EXPECT_EQ(said(), "ERROR: The connection to the printer is lost\n");
    talk::lose_connection(it);
    EXPECT_EQ(said(), "");
}

// Cancelled.

TEST_F(Monitor, ACancelInFrontOfTheFirstByteEndsAtOnceAndLeavesNothing)
{
    start();
    answer_questions({0x7E});
    talk::cancel_job(it, clock);
    EXPECT_EQ(it.now, phase::over);
    EXPECT_EQ(it.status, 0);
    EXPECT_TRUE(it.left_clean);
}

TEST_F(Monitor, ACancelDuringTheGreetingSwitchesAutomaticStatusOff)
{
    start();
    answer_questions();
    talk::cancel_job(it, clock);
    EXPECT_EQ(sent(), silence);
    EXPECT_EQ(it.now, phase::over);
}

TEST_F(Monitor, ACancelInFrontOfTheFirstByteKeepsTheMarkOfAnEarlierJob)
{
    it.clears_first = true;
    start();
    talk::cancel_job(it, clock);
    EXPECT_FALSE(it.left_clean) << "nobody knows whether the buffer was cleared";
}

TEST_F(Monitor, ACancelWhileThePaperIsOutEndsAtOnceWithinTheJob)
{
    reach_job();
    hear(automatic_paper_out);
    talk::cancel_job(it, clock);
    EXPECT_EQ(it.now, phase::over);
    EXPECT_EQ(it.status, 0);
    EXPECT_FALSE(it.left_clean);
    EXPECT_EQ(sent(), Bytes()) << "nothing of ours within a command";
}

TEST_F(Monitor, TheEndOfThePaperAfterACancelEndsAtOnce)
{
    reach_job();
    talk::cancel_job(it, clock);
    EXPECT_EQ(it.now, phase::job);
    hear(automatic_paper_out);
    EXPECT_EQ(it.now, phase::over);
}

TEST_F(Monitor, ACancelledPageIsCompletedWhileThePrinterTakesIt)
{
    reach_job();
    talk::cancel_job(it, clock);
    for (int i = 0; i < 30; i++) {
        pass(900);
        talk::note_progress(it, clock);
        ASSERT_EQ(it.now, phase::job);
    }
    talk::end_job(it, clock);
    hear(in_order);
    EXPECT_EQ(it.now, phase::over);
    EXPECT_TRUE(it.left_clean);
}

TEST_F(Monitor, ACancelledJobThatStallsEndsAfterASecond)
{
    reach_job();
    talk::cancel_job(it, clock);
    pass(1000);
    EXPECT_EQ(it.now, phase::over);
    EXPECT_EQ(it.status, 0);
    EXPECT_FALSE(it.left_clean);
}

TEST_F(Monitor, ACancelledJobWaitsForItsEndASecond)
{
    reach_ending();
    pass(5000);
    talk::cancel_job(it, clock);
    EXPECT_EQ(it.now, phase::ending);
    pass(999);
    talk::note_progress(it, clock);
    pass(1);
    EXPECT_EQ(it.now, phase::over);
    EXPECT_FALSE(it.left_clean);
}

TEST_F(Monitor, AConnectionThatIsLostAfterACancelIsNoFailure)
{
    reach_job();
    talk::cancel_job(it, clock);
    talk::lose_connection(it);
    EXPECT_EQ(it.status, 0);
    EXPECT_EQ(said(), "");
}

// Whatever comes.

TEST_F(Monitor, NeverWritesBeyondItsRoomWhenNobodyTakesItsBytes)
{
    reach_ending();
    for (int i = 0; i < 10000 && it.now == phase::ending; i++) {
        hear(i % 2 == 0 ? automatic_paper_out : automatic_cover_open);
        clock += 2000;
        talk::watch_clock(it, clock);
        hear(good);
        ASSERT_LE(it.out_length, sizeof it.out);
        ASSERT_LT(it.log_length, sizeof it.log);
    }
}

TEST_F(Monitor, EveryByteInEveryPhaseKeepsItAlive)
{
    for (unsigned first = 0; first < 256; first++) {
        for (const int where : {0, 1, 2, 3}) {
            it = talk::monitor{};
            wake_ups = 0;
            start();
            if (where >= 1) {
                answer_questions();
            }
            if (where >= 2) {
                hear(automatic_good + in_order);
            }
            if (where >= 3) {
                talk::end_job(it, clock);
            }
            for (unsigned second = 0; second < 256; second += 5) {
                hear({static_cast<uint8_t>(first), static_cast<uint8_t>(second)});
                pass(100);
            }
            if (it.now == phase::asking || it.now == phase::greeting) {
                pass(300);
            }
            if (it.now == phase::job) {
                talk::end_job(it, clock);
            }
            pass(61 * 1000);
            const bool waits = it.now == phase::ending && !talk::can_print(it.printer);
            EXPECT_TRUE(it.now == phase::over || waits) << first << " in phase " << where;
        }
    }
}

}  // namespace
