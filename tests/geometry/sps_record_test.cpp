#include "geometry/sps_record.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>

namespace halvern {
namespace {

// One field a line.
const std::string kPointLine =
    "S"                 // 1      letter
    "101             "  // 2-17   line name
    "    1001"          // 18-25  point number
    "1"                 // 26     index
    "  "                // 27-28  point code
    "  12"              // 29-32  static, ms
    " 3.0"              // 33-36  depth
    "   7"              // 37-40  datum
    " 5"                // 41-42  uphole time, ms
    " 1.5"              // 43-46  water depth
    " 531234.5"         // 47-55  easting
    " 6312345.6"        // 56-65  northing
    " 120.3"            // 66-71  elevation
    "123"               // 72-74  day
    "134501";           // 75-80  13:45:01

const std::string kRelationLine =
    "X"                 // 1      letter
    "TAPE01"            // 2-7    tape number
    "  51"              // 8-11   field record number
    "1"                 // 12     its increment
    "2"                 // 13     instrument
    "101             "  // 14-29  source line
    "    1001"          // 30-37  source point
    "3"                 // 38     source index
    "   1"              // 39-42  first channel
    "  96"              // 43-46  last channel
    "1"                 // 47     channel increment
    "201             "  // 48-63  receiver line
    "    1001"          // 64-71  first receiver
    "    1096"          // 72-79  last receiver
    "4";                // 80     receiver index

TEST(SpsPoint, EveryFieldStandsInItsColumns) {
    ASSERT_EQ(kPointLine.size(), 80u);
    const SpsPoint point = parse_sps_point(kPointLine);
    EXPECT_EQ(std::string(point.line_name.begin(), point.line_name.end()), "101             ");
    EXPECT_EQ(std::tuple(point.line, point.point, point.index, point.day, point.time),
              std::tuple(101, 1001, 1, 123, 134501));
    EXPECT_EQ(std::tuple(point.static_ms, point.depth, point.datum, point.uphole_ms),
              std::tuple(12, 3.0f, 7, 5));
    EXPECT_EQ(std::tuple(point.water_depth, point.easting, point.northing, point.elevation),
              std::tuple(1.5f, 531234.5, 6312345.6, 120.3f));
    EXPECT_FALSE(find_sps_point_fault(kPointLine));

    std::string text;
    append_sps_point(text, 'S', point);
    EXPECT_EQ(text, kPointLine + "\r\n");
}

TEST(SpsPoint, WhatALineLacksReadsAsZero) {
    const SpsPoint point = parse_sps_point(kPointLine.substr(0, 50));
    EXPECT_EQ(point.point, 1001);
    EXPECT_EQ(point.easting, 531);  // columns 47-50 are left of it
    EXPECT_EQ(point.northing, 0);
    EXPECT_EQ(point.time, 0);
    EXPECT_EQ(parse_sps_point("S").point, 0);
    EXPECT_EQ(parse_sps_point("S101                 1001E").index, 0);
}

TEST(SpsPoint, TheWriterKeepsIndexesAndDepthsInTheirColumns) {
    const std::pair<float, const char*> kDepths[] = {
        {0, " 0.0"},      {-3, " 3.0"},   {99.94f, "99.9"},   {99.96f, " 100"}, {100, " 100"},
        {150.6f, " 151"}, {9999, "9999"}, {12345.6f, "9999"}, {-1e30f, "9999"}};
    for (const auto& [depth, columns] : kDepths) {
        SpsPoint point = parse_sps_point(kPointLine);
        point.depth = point.water_depth = depth;
        point.index = 12;
        std::string text;
        append_sps_point(text, 'R', point);
        const std::string expected = kPointLine.substr(1, 24) + "9    12" + columns + "   7 5" +
                                     columns + kPointLine.substr(46) + "\r\n";
        EXPECT_EQ(text[0], 'R');
        EXPECT_EQ(text.substr(1), expected);
    }
}

TEST(SpsRelation, EveryFieldStandsInItsColumns) {
    ASSERT_EQ(kRelationLine.size(), 80u);
    const SpsRelation record = parse_sps_relation(kRelationLine);
    EXPECT_EQ(std::tuple(record.ffid, record.ffid_increment, record.instrument),
              std::tuple(51, 1, 2));
    EXPECT_EQ(std::tuple(record.source_line, record.source_point, record.source_index),
              std::tuple(101, 1001, 3));
    EXPECT_EQ(std::tuple(record.first_channel, record.last_channel, record.channel_increment),
              std::tuple(1, 96, 1));
    EXPECT_EQ(std::tuple(record.receiver_line, record.first_receiver, record.last_receiver),
              std::tuple(201, 1001, 1096));
    EXPECT_EQ(std::tuple(record.receiver_index, record.receiver_increment), std::tuple(4, 1));
    EXPECT_EQ(record.source_line_name, sps_line_name(101));
    EXPECT_EQ(record.receiver_line_name, sps_line_name(201));
    EXPECT_FALSE(find_sps_relation_fault(kRelationLine));

    std::string text;
    append_sps_relation(text, "TAPE01", record);
    EXPECT_EQ(text, kRelationLine + "\r\n");
}

TEST(SpsRelation, DescendingChannelsAreTurnedRound) {
    struct Case {
        const char* channels;   // columns 39-46
        const char* receivers;  // columns 64-79
        int first_channel, last_channel, first_receiver, last_receiver, increment;
        int channel, receiver;  // one that follows from them
    };
    constexpr Case kCases[] = {
        {"  96   1", "    1001    1096", 1, 96, 1096, 1001, -1, 2, 1095},
        {"   1  48", "    1001    1095", 1, 48, 1001, 1095, 2, 48, 1095},
        {"   7   7", "    1001    1096", 7, 7, 1001, 1096, 0, 7, 1001},
        {"   1   4", "    1001    1011", 1, 4, 1001, 1011, 3, 4, 1010},  // 10 / 3 is 3
        {"   1   2", "-999999999999999", 1, 2, -9999999, 99999999, 109999998, 2, 99999999}};
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.receivers);
        std::string line = kRelationLine;
        std::copy_n(c.channels, 8, line.begin() + 38);
        std::copy_n(c.receivers, 16, line.begin() + 63);
        const SpsRelation record = parse_sps_relation(line);
        EXPECT_EQ(record.first_channel, c.first_channel);
        EXPECT_EQ(record.last_channel, c.last_channel);
        EXPECT_EQ(record.first_receiver, c.first_receiver);
        EXPECT_EQ(record.last_receiver, c.last_receiver);
        EXPECT_EQ(record.receiver_increment, c.increment);
        EXPECT_EQ(record.receiver_point(c.channel), c.receiver);
    }
}

}  // namespace
}  // namespace halvern
