#include "apps/qvis-gerber/cli.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>

#include "qvis/artwork/io/excellon_reader.h"
#include "qvis/artwork/io/gerber_reader.h"
#include "qvis/artwork/io/gerber_writer.h"
#include "qvis/artwork/render.h"
#include "qvis/artwork/shapes.h"
#include "qvis/compat/atomic_file.h"
#include "qvis/gdi/png_codec.h"

namespace qvis {

namespace {

// zlib's fastest level: a frame of flat colour compresses well even so, and writing the file
// took three quarters of the time of opening a board and showing its first frame.
constexpr int kFastest = 1;

// WriteFramePng writes a rendered frame as PNG, made for speed: a frame holds one colour per
// layer and the background, so it is written indexed (one byte a pixel, a third of the data
// to compress) when it has at most 256 colours, and compressed at zlib's fastest level (the
// general writer of the device layer writes RGB at the default level).
bool WriteFramePng(const gdi::PixelImage& img, const std::string& path) {
  const std::size_t n = static_cast<std::size_t>(img.width) * static_cast<std::size_t>(img.height);
  if (img.width <= 0 || img.height <= 0 || img.pixels.size() != n) return false;
  std::vector<std::uint32_t> palette;
  std::vector<std::uint8_t> data(n);
  std::uint32_t last = img.pixels[0] & 0xFFFFFFu;
  std::uint8_t last_index = 0;
  palette.push_back(last);
  bool indexed = true;
  for (std::size_t i = 0; i < n && indexed; ++i) {
    const std::uint32_t p = img.pixels[i] & 0xFFFFFFu;
    if (p != last) {
      std::size_t k = 0;
      while (k < palette.size() && palette[k] != p) ++k;
      if (k == palette.size()) {
        if (palette.size() == 256) {
          indexed = false;
          break;
        }
        palette.push_back(p);
      }
      last = p;
      last_index = static_cast<std::uint8_t>(k);
    }
    data[i] = last_index;
  }
  std::vector<std::uint8_t> encoded;
  encoded.reserve(n / 8 + 1024);
  const bool ok =
      indexed ? gdi::EncodeIndexedPng(data.data(), img.width, img.height, palette.data(),
                                      static_cast<int>(palette.size()), &encoded, kFastest)
              : gdi::EncodePng(img.pixels.data(), img.width, img.height, img.width, &encoded,
                               kFastest);
  if (!ok) return false;
  WriteFileAtomically(path, encoded.data(), encoded.size());
  return true;
}

// WriteFrame draws `doc` in `view` and writes it as PNG. A frame holds one colour per layer and
// the background, so up to 255 layers it is composed straight into palette indices, one byte a
// pixel, and never as a 32-bit image.
bool WriteFrame(const ArtDocument& doc, const ArtView& view, const std::string& path) {
  if (doc.layers.size() > 255) {
    const gdi::PixelImage img = RenderArtwork(doc, view);
    return !img.pixels.empty() && WriteFramePng(img, path);
  }
  if (view.width <= 0 || view.height <= 0 || view.width > kMaxRenderSide ||
      view.height > kMaxRenderSide) {
    return false;
  }
  std::vector<const Layer*> order;
  for (const Layer& l : doc.layers) {
    if (l.visible) order.push_back(&l);
  }
  std::stable_sort(order.begin(), order.end(),
                   [](const Layer* a, const Layer* b) { return a->order < b->order; });
  const std::size_t n = static_cast<std::size_t>(view.width) * static_cast<std::size_t>(view.height);
  std::vector<std::uint8_t> index(n, 0);
  std::vector<std::uint32_t> colours;
  colours.push_back(view.background & 0xFFFFFFu);
  for (const Layer* l : order) {
    const std::vector<std::uint8_t> mask = RenderLayerMask(*l, view);
    if (mask.size() != n) return false;
    const auto k = static_cast<std::uint8_t>(colours.size());
    colours.push_back(l->colour & 0xFFFFFFu);
    for (std::size_t i = 0; i < n; ++i) {
      if (mask[i]) index[i] = k;
    }
  }
  std::vector<std::uint8_t> encoded;
  encoded.reserve(n / 8 + 1024);
  if (!gdi::EncodeIndexedPng(index.data(), view.width, view.height, colours.data(),
                             static_cast<int>(colours.size()), &encoded, kFastest)) {
    return false;
  }
  WriteFileAtomically(path, encoded.data(), encoded.size());
  return true;
}

constexpr double kDefaultDpi = 300.0;
constexpr int kDefaultBorder = 16;
// Colours of the second and later layers when several files are drawn.
constexpr std::uint32_t kLayerColours[] = {0xC83232, 0x3250C8, 0x32A050, 0xC8A032,
                                           0x9632C8, 0x32A0A0, 0x808080};

const char kUsage[] =
    "usage:\n"
    "  qvis-gerber render FILE [FILE...] -o OUT.png [--dpi N] [--origin X,Y] [--size WxH]\n"
    "                     [--foreground RRGGBB] [--background RRGGBB]\n"
    "  qvis-gerber info FILE...\n"
    "  qvis-gerber convert FILE -o OUT [--inch]\n"
    "\n"
    "render draws Gerber and Excellon files as layers in the order given. A board point (x, y)\n"
    "lands at u = (x - X) * N pixels from the left and v = H - (y - Y) * N from the top, where\n"
    "N is --dpi (default 300), X,Y is --origin in inches (the image's lower-left corner) and\n"
    "H the image height; a pixel is inked when its centre is inside a dark area, and lines\n"
    "thinner than a pixel are one pixel wide. Without --origin the board's extent is framed\n"
    "with a 16-pixel border; without --size the image is as large as that frame. The first\n"
    "file is drawn in --foreground (default 000000), later ones in their own colours, on\n"
    "--background (default FFFFFF).\n"
    "info prints format, units, extent, object counts, apertures and warnings.\n"
    "convert writes Gerber (millimetres, or --inch) from a Gerber or Excellon file.\n";

bool ParseColour(const std::string& s, std::uint32_t* out) {
  std::string t = s[0] == '#' ? s.substr(1) : s;
  if (t.size() != 6) return false;
  char* end = nullptr;
  const unsigned long v = std::strtoul(t.c_str(), &end, 16);
  if (*end != '\0') return false;
  *out = static_cast<std::uint32_t>(v);
  return true;
}

std::string FormatMm(Coord nm) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.4f mm (%.5f in)", static_cast<double>(nm) / kNmPerMm,
                static_cast<double>(nm) / kNmPerInch);
  return buf;
}

void PrintWarnings(const std::string& path, const ReadResult& r, std::ostream& err) {
  for (const ReadMessage& w : r.warnings) err << path << ": warning: " << w.ToString() << "\n";
}

int Render(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  std::vector<std::string> files;
  std::string output;
  double dpi = kDefaultDpi;
  bool have_origin = false, have_size = false;
  double ox = 0, oy = 0;
  int w = 0, h = 0;
  std::uint32_t fg = 0x000000, bg = 0xFFFFFF;
  for (std::size_t i = 1; i < args.size(); ++i) {
    const std::string& a = args[i];
    auto value = [&]() -> const std::string* {
      if (i + 1 >= args.size()) return nullptr;
      return &args[++i];
    };
    const std::string* v = nullptr;
    if (a == "-o") {
      if (!(v = value())) return err << "render: -o needs a file\n", 2;
      output = *v;
    } else if (a == "--dpi") {
      if (!(v = value()) || std::sscanf(v->c_str(), "%lf", &dpi) != 1 || !(dpi > 0) || dpi > 1e5) {
        return err << "render: --dpi needs a number above 0\n", 2;
      }
    } else if (a == "--origin") {
      if (!(v = value()) || std::sscanf(v->c_str(), "%lf,%lf", &ox, &oy) != 2) {
        return err << "render: --origin needs X,Y in inches\n", 2;
      }
      have_origin = true;
    } else if (a == "--size") {
      if (!(v = value()) || std::sscanf(v->c_str(), "%dx%d", &w, &h) != 2 || w <= 0 || h <= 0 ||
          w > kMaxRenderSide || h > kMaxRenderSide) {
        return err << "render: --size needs WxH, each 1 to " << kMaxRenderSide << "\n", 2;
      }
      have_size = true;
    } else if (a == "--foreground" || a == "--background") {
      if (!(v = value()) || !ParseColour(*v, a == "--foreground" ? &fg : &bg)) {
        return err << "render: " << a << " needs RRGGBB\n", 2;
      }
    } else if (!a.empty() && a[0] == '-') {
      return err << "render: unknown option " << a << "\n" << kUsage, 2;
    } else {
      files.push_back(a);
    }
  }
  if (files.empty() || output.empty()) return err << kUsage, 2;
  ArtDocument doc;
  for (std::size_t i = 0; i < files.size(); ++i) {
    Layer layer;
    const ReadResult r = LoadArtworkFile(files[i], &layer);
    if (!r.ok) return err << files[i] << ": " << r.error.ToString() << "\n", 1;
    PrintWarnings(files[i], r, err);
    layer.colour = i == 0 ? fg : kLayerColours[(i - 1) % std::size(kLayerColours)];
    layer.order = static_cast<int>(i);
    doc.layers.push_back(std::move(layer));
  }
  // The extent costs as much as drawing the board once: skip it when the framing is given.
  ArtView view;
  view.dpi = dpi;
  if (!have_origin || !have_size) view = FitView(DocumentExtent(doc), dpi, kDefaultBorder);
  if (have_origin) {
    view.origin_x = static_cast<Coord>(std::llround(ox * kNmPerInch));
    view.origin_y = static_cast<Coord>(std::llround(oy * kNmPerInch));
  }
  if (have_size) {
    view.width = w;
    view.height = h;
  }
  view.background = bg;
  if (view.width > kMaxRenderSide || view.height > kMaxRenderSide) {
    return err << "render: the image would be larger than " << kMaxRenderSide
               << " pixels a side; lower --dpi or give --size\n", 1;
  }
  if (!WriteFrame(doc, view, output)) return err << "render: cannot write " << output << "\n", 1;
  out << output << ": " << view.width << "x" << view.height << " at " << dpi << " dpi\n";
  return 0;
}

int Info(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  if (args.size() < 2) return err << kUsage, 2;
  int status = 0;
  for (std::size_t i = 1; i < args.size(); ++i) {
    Layer layer;
    const ReadResult r = LoadArtworkFile(args[i], &layer);
    out << args[i] << ":\n";
    if (!r.ok) {
      out << "  error: " << r.error.ToString() << "\n";
      status = 1;
      continue;
    }
    out << "  format: " << (layer.kind == LayerKind::kDrill ? "Excellon drill" : "Gerber RS-274X")
        << "\n  units: " << (layer.units == Units::kInch ? "inch" : "mm") << "\n";
    if (!layer.file_function.empty()) out << "  function: " << layer.file_function << "\n";
    const ArtBox box = LayerExtent(layer);
    if (box.IsEmpty()) {
      out << "  extent: empty\n";
    } else {
      out << "  extent: x " << FormatMm(box.min_x) << " to " << FormatMm(box.max_x) << "\n"
          << "          y " << FormatMm(box.min_y) << " to " << FormatMm(box.max_y) << "\n";
    }
    const ObjectCounts c = CountObjects(layer);
    out << "  objects: " << c.tracks << " tracks, " << c.arcs << " arcs, " << c.flashes
        << " flashes, " << c.regions << " regions, " << c.repeats << " step-and-repeat\n";
    out << "  apertures: " << layer.apertures.size() << "\n";
    for (const auto& [code, ap] : layer.apertures) {
      out << "    D" << code << " " << ApertureKindName(ap.kind);
      if (ap.kind == ApertureKind::kMacro) out << " " << ap.macro;
      if (ap.kind <= ApertureKind::kPolygon) out << " " << FormatMm(ap.size_x);
      out << "\n";
    }
    out << "  warnings: " << r.warnings.size() << "\n";
    for (const ReadMessage& w : r.warnings) out << "    " << w.ToString() << "\n";
  }
  return status;
}

int Convert(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  std::string input, output;
  GerberWriteOptions opt;
  for (std::size_t i = 1; i < args.size(); ++i) {
    if (args[i] == "-o" && i + 1 < args.size()) {
      output = args[++i];
    } else if (args[i] == "--inch") {
      opt.units = Units::kInch;
    } else if (input.empty() && args[i][0] != '-') {
      input = args[i];
    } else {
      return err << kUsage, 2;
    }
  }
  if (input.empty() || output.empty()) return err << kUsage, 2;
  Layer layer;
  const ReadResult r = LoadArtworkFile(input, &layer);
  if (!r.ok) return err << input << ": " << r.error.ToString() << "\n", 1;
  PrintWarnings(input, r, err);
  std::ofstream f(output, std::ios::binary);
  f << WriteGerber(layer, opt);
  if (!f.flush()) return err << "convert: cannot write " << output << "\n", 1;
  out << output << "\n";
  return 0;
}

}  // namespace

ReadResult LoadArtworkFile(const std::string& path, Layer* layer) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    ReadResult r;
    r.error.text = "cannot open the file";
    return r;
  }
  // One read of the whole file (a character at a time cost as much as parsing the numbers).
  std::string text;
  char chunk[1 << 16];
  while (in.read(chunk, sizeof chunk) || in.gcount() > 0) text.append(chunk, static_cast<std::size_t>(in.gcount()));
  ReadResult r = LooksLikeGerber(text) ? ReadGerber(text, layer) : ReadExcellon(text, layer);
  const std::size_t slash = path.find_last_of('/');
  if (layer->name.empty()) layer->name = path.substr(slash == std::string::npos ? 0 : slash + 1);
  return r;
}

int RunGerberCli(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  if (args.empty() || args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
    (args.empty() ? err : out) << kUsage;
    return args.empty() ? 2 : 0;
  }
  if (args[0] == "render") return Render(args, out, err);
  if (args[0] == "info") return Info(args, out, err);
  if (args[0] == "convert") return Convert(args, out, err);
  err << "qvis-gerber: unknown command " << args[0] << "\n" << kUsage;
  return 2;
}

}  // namespace qvis
