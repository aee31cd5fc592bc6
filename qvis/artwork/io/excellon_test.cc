// The Excellon reader: header tools, units and zero forms, hits, slots, routes, repeats, errors.
#include "qvis/artwork/io/excellon_reader.h"

#include <gtest/gtest.h>

namespace qvis {
namespace {

TEST(ExcellonReaderTest, ToolsHitsSlotsAndRepeatsInEveryNumberForm) {
  Layer layer;
  const ReadResult r = ReadExcellon(
      "M48\n;drill file\nINCH,LZ\nT1C0.0315\nT2C0.04\n%\nG90\nG05\nT1\nX015000Y020000\n"
      "X016\nT2\nX01Y01G85X02Y01\nR2X001Y0\nM71\nX10.5Y-2.25\nM30\n",
      &layer);
  ASSERT_TRUE(r.ok) << r.error.ToString();
  EXPECT_EQ(layer.kind, LayerKind::kDrill);
  ASSERT_EQ(layer.apertures.size(), 2u);
  EXPECT_EQ(layer.apertures[DrillAperture(1)].size_x, 800100);  // 0.0315 in
  ASSERT_EQ(layer.objects.size(), 6u);
  // Leading zeros kept, 2 integer digits: 015000 is 01.5000 in; a short X016 is 01.6.
  EXPECT_EQ(layer.objects[0].end, (ArtPoint{kNmPerInch * 3 / 2, kNmPerInch * 2}));
  EXPECT_EQ(layer.objects[1].end, (ArtPoint{kNmPerInch * 16 / 10, kNmPerInch * 2}));
  EXPECT_EQ(layer.objects[2].kind, ObjectKind::kTrack);  // the slot
  EXPECT_EQ(layer.objects[2].start, (ArtPoint{kNmPerInch, kNmPerInch}));
  EXPECT_EQ(layer.objects[2].end, (ArtPoint{2 * kNmPerInch, kNmPerInch}));
  EXPECT_EQ(layer.objects[2].aperture, DrillAperture(2));
  EXPECT_EQ(layer.objects[4].end, (ArtPoint{kNmPerInch * 22 / 10, kNmPerInch}));  // repeats
  EXPECT_EQ(layer.objects[5].end, (ArtPoint{10500000, -2250000}));  // metric, decimal
  // Trailing zeros kept in metric 3.3: 1500 is 1.500 mm.
  ASSERT_TRUE(ReadExcellon("M48\nMETRIC,TZ\nT3C1.0\n%\nT3\nX1500Y-250\nM30\n", &layer).ok);
  EXPECT_EQ(layer.objects[0].end, (ArtPoint{1500000, -250000}));
  ASSERT_TRUE(ReadExcellon("M48\nMETRIC,LZ,000.00\nT3C1.0\n%\nT3\nX00150Y01\nM30\n", &layer).ok);
  EXPECT_EQ(layer.objects[0].end, (ArtPoint{1500000, 10000000}));
}

TEST(ExcellonReaderTest, RoutedPaths) {
  Layer layer;
  const ReadResult r = ReadExcellon(
      "M48\nMETRIC\nT1C2.0\n%\nT1\nG00X0Y0\nM15\nG01X10.0Y0\nG03X10.0Y10.0A5.0\n"
      "G02X0Y10.0I-5.0J0\nM16\nG00X50.0Y50.0\nM30\n",
      &layer);
  ASSERT_TRUE(r.ok) << r.error.ToString();
  ASSERT_EQ(layer.objects.size(), 3u);
  EXPECT_EQ(layer.objects[0].kind, ObjectKind::kTrack);
  EXPECT_EQ(layer.objects[1].kind, ObjectKind::kArc);
  EXPECT_EQ(layer.objects[1].centre, (ArtPoint{10000000, 5000000}));
  EXPECT_EQ(layer.objects[2].centre, (ArtPoint{5000000, 10000000}));
  EXPECT_EQ(layer.objects[2].direction, ArcDirection::kClockwise);
}

TEST(ExcellonReaderTest, RouteModeRepeatsTheLastMotionAndDrawsOnlyWithTheToolDown) {
  Layer layer;
  const ReadResult r = ReadExcellon(
      "M48\nINCH\nT1C0.04\n%\nT1\nG00X0.1Y0.1\nM15\nG01X0.8Y0.1\nX0.8Y0.6\n"
      "G03X0.3Y0.6A0.25\nM16\nX0.3Y0.9\nG00X-0.5Y-0.5\nM15\nG01X-1.0Y-0.5\nM17\nG05\n"
      "X-1.0Y1.0\nM30\n",
      &layer);
  ASSERT_TRUE(r.ok) << r.error.ToString();
  const Coord in = kNmPerInch;
  ASSERT_EQ(layer.objects.size(), 5u);
  // G01 from (0.1, 0.1), then the bare line continues it to (0.8, 0.6).
  EXPECT_EQ(layer.objects[0].kind, ObjectKind::kTrack);
  EXPECT_EQ(layer.objects[0].start, (ArtPoint{in / 10, in / 10}));
  EXPECT_EQ(layer.objects[1].kind, ObjectKind::kTrack);
  EXPECT_EQ(layer.objects[1].start, (ArtPoint{in * 8 / 10, in / 10}));
  EXPECT_EQ(layer.objects[1].end, (ArtPoint{in * 8 / 10, in * 6 / 10}));
  // The radius is half the chord: the centre is its midpoint.
  EXPECT_EQ(layer.objects[2].kind, ObjectKind::kArc);
  EXPECT_EQ(layer.objects[2].centre, (ArtPoint{in * 55 / 100, in * 6 / 10}));
  // After M16 the bare line only moves; the second route starts at the G00 point.
  EXPECT_EQ(layer.objects[3].start, (ArtPoint{-in / 2, -in / 2}));
  EXPECT_EQ(layer.objects[3].end, (ArtPoint{-in, -in / 2}));
  // G05 goes back to drilling: the bare line is a hole.
  EXPECT_EQ(layer.objects[4].kind, ObjectKind::kFlash);
  EXPECT_EQ(layer.objects[4].end, (ArtPoint{-in, in}));
}

TEST(ExcellonReaderTest, ErrorsAndLimits) {
  Layer layer;
  // A tool no Gerber size could hold is refused, so a drill layer always writes as Gerber.
  EXPECT_FALSE(ReadExcellon("M48\nINCH\nT1C66666666666\n%\nM30\n", &layer).ok);
  ReadResult r = ReadExcellon("M48\nINCH\n%\nT5\nX1Y1\n", &layer);
  ASSERT_FALSE(r.ok);
  EXPECT_EQ(r.error.line, 4);
  EXPECT_NE(r.error.text.find("tool defined"), std::string::npos);
  r = ReadExcellon("M48\nINCH\nT1C0.1\n%\nX1Y1\n", &layer);
  ASSERT_FALSE(r.ok);
  EXPECT_EQ(r.error.line, 5);
  r = ReadExcellon("M48\nINCH\nT1C0.1\n%\nT1\nX1Q5\n", &layer);
  ASSERT_FALSE(r.ok);
  EXPECT_EQ(r.error.column, 3);
  ReadLimits small;
  small.max_objects = 100;
  EXPECT_FALSE(ReadExcellon("M48\nINCH\nT1C0.1\n%\nT1\nX1Y1\nR99999999X1\n", &layer, small).ok);
  // Coordinates beyond 10^9 mm, read or reached by repeats, are refused where they appear.
  r = ReadExcellon("M48\nMETRIC\nT1C0.1\n%\nT1\nX999999999999999999Y0\n", &layer);
  ASSERT_FALSE(r.ok);
  EXPECT_EQ(r.error.line, 6);
  EXPECT_NE(r.error.text.find("within 10^9 mm"), std::string::npos);
  r = ReadExcellon("M48\nMETRIC\nT1C0.1\n%\nT1\nX0Y0\nR9X900000000.0\n", &layer);
  ASSERT_FALSE(r.ok);
  EXPECT_EQ(r.error.line, 7);
  EXPECT_NE(r.error.text.find("within 10^9 mm"), std::string::npos);
  r = ReadExcellon("M48\nINCH\nT1C0.1\n%\nT1\nX1Y1\n", &layer);
  ASSERT_TRUE(r.ok);
  ASSERT_EQ(r.warnings.size(), 1u);
  EXPECT_NE(r.warnings[0].text.find("M30"), std::string::npos);
}

}  // namespace
}  // namespace qvis
