// What a printer says to the port monitor, at any time and in any pieces: it stays within its records, wakes up only
// when something is due, sends nothing of its own among the job's bytes, and comes to an end.
#include "fuzz/input.h"
#include "talk/monitor.h"

namespace {

class Run {
public:
    explicit Run(fuzz::Input &from) : input(from)
    {
        const uint8_t settings = input.byte();
        it.has_back_channel = settings % 8 != 0;
        it.clears_first = (settings & 8) != 0;
        talk::start_monitor(it, (settings & 16) != 0 ? "media-empty-error,other-error" : nullptr, clock);
        check();
    }

    void go()
    {
        while (!input.done() && it.now != talk::phase::over) {
            step();
        }
        finish();
    }

private:
    fuzz::Input &input;
    talk::monitor it;
    int64_t clock = 0;

    void check()
    {
        FUZZ_CHECK(it.out_length <= sizeof it.out && it.log_length < sizeof it.log);
    }

    void take_away()
    {
        it.out_length = 0;
        it.log_length = 0;
    }

    void step()
    {
        const bool in_job = it.now == talk::phase::job;
        const uint8_t what = input.byte();
        switch (what % 8) {
            case 0:
                clock += int64_t{input.byte()} * 20;
                talk::watch_clock(it, clock);
                break;
            case 1:
                take_away();
                break;
            case 2:
                if (in_job && what >= 128) {
                    talk::end_job(it, clock);
                    check();
                    return;
                }
                talk::note_progress(it, clock);
                break;
            case 3:
                if (what >= 224) {
                    talk::cancel_job(it, clock);
                }
                break;
            default: {
                const uint8_t bytes[2] = {input.byte(), input.byte()};
                talk::hear_printer(it, bytes, 1 + what % 2U, clock);
                break;
            }
        }
        if (in_job && it.now == talk::phase::job) {
            FUZZ_CHECK(it.out_length == 0 || it.out_length == before);
        }
        before = it.out_length;
        check();
    }

    uint32_t before = 0;

    // From here on the printer is silent.
    void finish()
    {
        for (int i = 0; it.now != talk::phase::over; i++) {
            if (it.now == talk::phase::job) {
                talk::end_job(it, clock);
                continue;
            }
            if (it.now == talk::phase::ending && !talk::can_print(it.printer)) {
                return;  // it waits for paper
            }
            FUZZ_CHECK(i < 1000);
            const int64_t deadline = talk::next_deadline(it);
            FUZZ_CHECK(deadline >= 0);
            clock = deadline > clock ? deadline : clock;
            talk::watch_clock(it, clock);
            take_away();
        }
        FUZZ_CHECK(it.status == 0 || it.status == 1);
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    Run(input).go();
    return 0;
}
