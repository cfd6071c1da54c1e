// A failed comparison shows both sides, and here a side can be a trace of megabytes. What one failure prints is
// bounded: its beginning and its end, where the texts of the comparison and of the test itself stand.
#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

constexpr size_t most = 3000;

class BoundedPrinter : public testing::EmptyTestEventListener {
public:
    explicit BoundedPrinter(testing::TestEventListener *printer) : printer_(printer) {}

    void OnTestProgramStart(const testing::UnitTest &unit) override
    {
        printer_->OnTestProgramStart(unit);
    }
    void OnTestIterationStart(const testing::UnitTest &unit, int iteration) override
    {
        printer_->OnTestIterationStart(unit, iteration);
    }
    void OnTestStart(const testing::TestInfo &test) override
    {
        printer_->OnTestStart(test);
    }
    void OnTestPartResult(const testing::TestPartResult &result) override
    {
        const std::string text = result.message();
        if (text.size() <= most) {
            printer_->OnTestPartResult(result);
            return;
        }
        const std::string left_out = "\n... " + std::to_string(text.size() - most) + " characters left out ...\n";
        const std::string shortened = text.substr(0, most / 2) + left_out + text.substr(text.size() - most / 2);
        printer_->OnTestPartResult(
            testing::TestPartResult(result.type(), result.file_name(), result.line_number(), shortened.c_str()));
    }
    void OnTestEnd(const testing::TestInfo &test) override
    {
        printer_->OnTestEnd(test);
    }
    void OnTestIterationEnd(const testing::UnitTest &unit, int iteration) override
    {
        printer_->OnTestIterationEnd(unit, iteration);
    }

private:
    std::unique_ptr<testing::TestEventListener> printer_;
};

// Before main() reads the command line: it goes on with the listeners that are there.
const bool installed = [] {
    testing::TestEventListeners &listeners = testing::UnitTest::GetInstance()->listeners();
    listeners.Append(new BoundedPrinter(listeners.Release(listeners.default_result_printer())));
    return true;
}();

}  // namespace
