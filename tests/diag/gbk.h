// UTF-8 text as GBK bytes, by the C library's own conversion.
#pragma once

#include <gtest/gtest.h>
#include <iconv.h>
#include <string.h>

#include <string>

inline std::string to_gbk(const char *utf8)
{
    iconv_t conversion = iconv_open("GBK", "UTF-8");
    EXPECT_NE(conversion, reinterpret_cast<iconv_t>(-1)) << "this system cannot convert to GBK";
    std::string source = utf8;
    std::string gbk(source.size() + 1, '\0');
    char *in = source.data();
    char *out = gbk.data();
    size_t in_left = source.size();
    size_t out_left = gbk.size();
    EXPECT_EQ(iconv(conversion, &in, &in_left, &out, &out_left), 0U) << utf8;
    iconv_close(conversion);
    gbk.resize(gbk.size() - out_left);
    return gbk;
}
