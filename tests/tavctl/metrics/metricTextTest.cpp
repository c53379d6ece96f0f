// The two forms of a text of metrics.
#include "tavctl/metrics/metricText.h"

#include <gtest/gtest.h>

namespace {

using tavctl::labelValue;
using tavctl::MetricText;
using Form = tavctl::MetricText::Form;
using Kind = tavctl::MetricText::Kind;

std::string smallText(Form form) {
    MetricText text(form);
    text.beginFamily("box", Kind::info, "A box.");
    text.add({{"name", "B1"}, {"model", "M"}});
    text.beginFamily("speed_per_second", Kind::gauge, "Its speed.");
    text.add({}, 64e9);
    text.add({{"name", "B1"}}, 0.125);
    text.beginFamily("none", Kind::gauge, "Without samples.");
    return text.take();
}

TEST(MetricText, HasPrometheusForm) {
    EXPECT_EQ(smallText(Form::prometheus), "# HELP box_info A box.\n"
                                           "# TYPE box_info gauge\n"
                                           "box_info{name=\"B1\",model=\"M\"} 1\n"
                                           "# HELP speed_per_second Its speed.\n"
                                           "# TYPE speed_per_second gauge\n"
                                           "speed_per_second 64000000000\n"
                                           "speed_per_second{name=\"B1\"} 0.125\n"
                                           "# HELP none Without samples.\n"
                                           "# TYPE none gauge\n");
}

TEST(MetricText, HasOpenMetricsForm) {
    EXPECT_EQ(smallText(Form::openMetrics), "# TYPE box info\n"
                                            "# HELP box A box.\n"
                                            "box_info{name=\"B1\",model=\"M\"} 1\n"
                                            "# TYPE speed_per_second gauge\n"
                                            "# HELP speed_per_second Its speed.\n"
                                            "speed_per_second 64000000000\n"
                                            "speed_per_second{name=\"B1\"} 0.125\n"
                                            "# TYPE none gauge\n"
                                            "# HELP none Without samples.\n"
                                            "# EOF\n");
}

TEST(MetricText, TellsTheSameLabelsOnceInAFamily) {
    MetricText text(Form::prometheus);
    text.beginFamily("a", Kind::gauge, "A.");
    text.add({{"name", "B"}}, 1);
    text.add({{"name", "B"}}, 2);
    text.beginFamily("b", Kind::gauge, "B.");
    text.add({{"name", "B"}}, 3);
    EXPECT_EQ(text.take(), "# HELP a A.\n# TYPE a gauge\na{name=\"B\"} 1\n"
                           "# HELP b B.\n# TYPE b gauge\nb{name=\"B\"} 3\n");
}

TEST(LabelValue, EscapesWhatWouldEndIt) {
    EXPECT_EQ(labelValue("TAV1 \xC3\xA4"), "TAV1 \xC3\xA4");
    EXPECT_EQ(labelValue("a\"b\\c\nd"), R"(a\"b\\c\nd)");
    EXPECT_EQ(labelValue("\n"), R"(\n)");
    EXPECT_EQ(labelValue(""), "");
}

TEST(LabelValue, ShowsByNumberWhatCannotBeSeenOrIsNoText) {
    EXPECT_EQ(labelValue(std::string_view("a\0b\033\xFF", 5)), R"(a\\x00b\\x1B\\xFF)");
    EXPECT_EQ(labelValue("\xE2\x80\xAE"), R"(\\u202E)");
}

} // namespace
