// Finding printers and reading addresses.
#include "talk/find.h"
#include "talk/device.h"
#include "talk/logo.h"
#include "talk/report.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

TEST(Find, AModelIsKnownByItsDeviceId)
{
    EXPECT_EQ(talk::model_of_device_id("MFG:Acme;MDL:QX-100;CMD:ESCPOS;"), "Acme QX-100");
    EXPECT_EQ(talk::model_of_device_id("MANUFACTURER:Acme;CLS:PRINTER;MODEL:QX-200"), "Acme QX-200");
    EXPECT_EQ(talk::model_of_device_id("mfg:acme"), "");
    EXPECT_EQ(talk::model_of_device_id(" MFG:ACME; MDL:qx-100"), "Acme QX-100") << "capitals and blanks do not count";
    for (const char *unknown : {"", ";", ":", ";;:;", "MFG:Acme;", "MDL:QX-100;", "MFG:Other;MDL:QX-100;", "MFG",
                                "MFG:Acme;MDL:;", "MFG:;MDL:unknown;"}) {
        EXPECT_EQ(talk::model_of_device_id(unknown), "") << unknown;
    }
}

TEST(Find, UsbPrintersAreReadFromTheKernel)
{
    char name[] = "/tmp/klov-usb-XXXXXX";
    ASSERT_NE(mkdtemp(name), nullptr);
    const std::filesystem::path folder = name;
    for (const auto &[entry, id] : {std::pair("lp1", "MFG:Acme;MDL:QX-100;"), std::pair("lp0", "MFG:Other;MDL:Thing;"),
                                    std::pair("hiddev0", "MFG:Acme;MDL:QX-100;")}) {
        std::filesystem::create_directories(folder / entry / "device");
        std::ofstream(folder / entry / "device" / "ieee1284_id") << id << "\n";
    }
    std::filesystem::create_directories(folder / "lp2");
    const auto printers = talk::find_usb(folder);
    ASSERT_EQ(printers.size(), 2U);
    EXPECT_EQ(printers[0].device, "/dev/usb/lp0");
    EXPECT_EQ(printers[0].name, "Other Thing");
    EXPECT_EQ(printers[0].model, "");
    EXPECT_EQ(printers[1].device, "/dev/usb/lp1");
    EXPECT_EQ(printers[1].model, "Acme QX-100");
    std::filesystem::remove_all(folder);
    EXPECT_TRUE(talk::find_usb(folder).empty());
}

TEST(Find, NetworkPrintersAreReadFromAvahi)
{
    const std::string text =
        "+;eth0;IPv4;Till;_pdl-datastream._tcp;local\n"
        "=;eth0;IPv4;Till\\032\\0402\\041;_pdl-datastream._tcp;local;till.local;192.0.2.7;9100;\"usb_MFG=Acme\" "
        "\"usb_MDL=QX-100\" \"ty=Acme QX-100\"\n"
        "=;eth0;IPv6;Till\\032\\0402\\041;_pdl-datastream._tcp;local;till.local;2001:db8::7;9100;\"ty=x\"\n"
        "=;eth0;IPv6;Kitchen;_pdl-datastream._tcp;local;k.local;2001:db8::8;9101;\n"
        "=;short\n";
    const auto printers = talk::read_avahi(text);
    ASSERT_EQ(printers.size(), 2U);
    EXPECT_EQ(printers[0].name, "Till (2)");
    EXPECT_EQ(printers[0].device, "socket://192.0.2.7:9100");
    EXPECT_EQ(printers[0].model, "Acme QX-100");
    EXPECT_EQ(printers[1].device, "socket://[2001:db8::8]:9101");
    EXPECT_TRUE(talk::read_avahi("").empty());
}

TEST(Device, SocketAddresses)
{
    struct row {
        const char *address;
        const char *host;
        const char *port;
    };
    for (const row &test : {row{"socket://192.0.2.7", "192.0.2.7", "9100"}, row{"socket://till:9101/", "till", "9101"},
                            row{"socket://till?waiteof=false", "till", "9100"},
                            row{"socket://[2001:db8::7]:9100/x", "2001:db8::7", "9100"},
                            row{"socket://[2001:db8::7]", "2001:db8::7", "9100"}}) {
        std::string host;
        std::string port;
        EXPECT_TRUE(talk::split_socket_address(test.address, host, port)) << test.address;
        EXPECT_EQ(host, test.host);
        EXPECT_EQ(port, test.port);
    }
    for (const char *wrong : {"", "socket:", "socket://", "socket://:9100", "socket://x:", "socket://x:9x",
                              "socket://x:123456", "http://x", "socket://[]"}) {
        std::string host;
        std::string port;
        EXPECT_FALSE(talk::split_socket_address(wrong, host, port)) << wrong;
    }
}

TEST(Report, JsonIsSoundWhateverTheAddressIs)
{
    talk::Report report;
    report.device = "a\"b\\c\n\x7F\xC3";
    report.printer = talk::health{};
    EXPECT_EQ(talk::as_json(report),
              "{\"device\":\"a\\\"b\\\\c\\u000a\\u007f\\u00c3\",\"ready\":true,\"paper\":\"ok\",\"cover\":\"closed\","
              "\"drawer\":\"unknown\",\"error\":null}\n");
}

TEST(Logo, KeyCodesAreReadFromAWholeListOnly)
{
    std::vector<uint8_t> codes;
    bool more = false;
    EXPECT_TRUE(talk::read_key_codes({0x37, 0x72, 0x40, 0x00}, codes, more));
    EXPECT_TRUE(codes.empty());
    EXPECT_FALSE(more);
    EXPECT_TRUE(talk::read_key_codes({0x37, 0x72, 0x41, 0x30, 0x31, 0x00}, codes, more));
    EXPECT_EQ(codes, (std::vector<uint8_t>{0x30, 0x31}));
    EXPECT_TRUE(more);
    for (const std::vector<uint8_t> &part : {std::vector<uint8_t>{},
                                             {0x37},
                                             {0x37, 0x72, 0x40},
                                             {0x37, 0x72, 0x00},
                                             {0x37, 0x72, 0x40, 0x30},
                                             {0x37, 0x25, 0x40, 0x00}}) {
        EXPECT_FALSE(talk::read_key_codes(part, codes, more));
    }
}

}  // namespace
