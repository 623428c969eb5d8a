// Connect strings taken apart.
#include <gtest/gtest.h>

#include "access/formats/driver.h"
#include "access/model/connect_string.h"

namespace velnor::model {
namespace {

TEST(ConnectString, theFirstPartPicksTheDriver)
{
    EXPECT_EQ(parseConnect("dBASE 5.0;").word, "dBASE 5.0;");
    EXPECT_EQ(parseConnect("Text").word, "Text;");
    EXPECT_EQ(parseConnect(" FoxPro 2.6 ;codepage=866").word, "FoxPro 2.6;");
    EXPECT_EQ(parseConnect("").word, "");
    EXPECT_EQ(parseConnect(";").word, "");
}

TEST(ConnectString, aFirstPartWithAnEqualSignIsNoWord)
{
    const ConnectString c = parseConnect("pwd=secret");
    EXPECT_EQ(c.word, "");
    EXPECT_EQ(c.password, "secret");
}

TEST(ConnectString, partsAreKnownByTheirKeyBlindToCase)
{
    const ConnectString c = parseConnect("Access 2000;PWD= a b;CodePage= cp866 ;other=1;;");
    EXPECT_EQ(c.word, "Access 2000;");
    EXPECT_EQ(c.password, " a b");
    EXPECT_EQ(c.codePage, "cp866");
    EXPECT_EQ(parseConnect(";pwd=").password, "");
    EXPECT_TRUE(parseConnect(";pwd=").hasPassword);
    EXPECT_FALSE(parseConnect(";LANGID=0x0409").hasPassword);
    EXPECT_EQ(parseConnect(";pwd=a=b").password, "a=b");
}

TEST(ConnectString, partsThatTheEngineDoesNotKnowAreLeftToTheDriver)
{
    const ConnectString c = parseConnect("Excel 8.0;HDR=No; imex=1 ;codepage=1252;");
    EXPECT_EQ(c.options, "HDR=No;imex=1");
    EXPECT_EQ(connectOption(c.options, "hdr"), "No");
    EXPECT_EQ(connectOption(c.options, "IMEX"), "1");
    EXPECT_EQ(connectOption(c.options, "cells"), std::nullopt);
    EXPECT_EQ(connectOption("", "hdr"), std::nullopt);
}

TEST(ConnectString, aNewFilesKindStandsBehindTheLocale)
{
    EXPECT_EQ(parseCreation(";LANGID=0x0409;CP=1252;COUNTRY=0Excel 8.0;").word, "Excel 8.0;");
    EXPECT_EQ(parseCreation("Lotus WK4;").word, "Lotus WK4;");
    EXPECT_EQ(parseCreation("").word, "");
    const ConnectString c = parseCreation(";LANGID=0x0409;CP=1252;COUNTRY=0;pwd=secret");
    EXPECT_EQ(c.word, "");
    EXPECT_EQ(c.password, "secret");
}

}  // namespace
}  // namespace velnor::model
