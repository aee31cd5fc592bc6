// qvis::session::Session: runs a session script against a drawing window on the headless port.
// Each script line becomes the messages a message loop would deliver; the figures the commands
// finish are taken into a host document that the window paints through its host hook.
#ifndef APPS_QVIS_SESSION_SESSION_H_
#define APPS_QVIS_SESSION_SESSION_H_

#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "apps/qvis-session/host_document.h"
#include "qvis/design/design.h"
#include "qvis/compat/cpoint.h"
#include "qvis/window/drawing_window.h"
#include "qvis/window/headless/headless_port.h"

namespace qvis::session {

// ScriptError: a line that cannot run; the text says what was expected.
class ScriptError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// SessionDesign: the host's design, whose zoom-all hook (Alt+1) fits the host's figures into
// the window with the margin factor the window passes. No figures: nothing changes, 0.
class SessionDesign : public CQVIS_Design {
 public:
  explicit SessionDesign(const HostDocument* document) : document_(document) {}
  using CQVIS_Design::ZoomAll;
  int ZoomAll(double width, double height, bool flag, double margin) override;

 private:
  const HostDocument* document_;
};

// SessionWindow: the drawing window of the session host over a SessionDesign; it paints the
// host's document.
class SessionWindow : public CQVIS_Wnd {
 public:
  explicit SessionWindow(const HostDocument* document);
  void OnDrawHost(CQVIS_GDI* surface, qvis::HDC dc) override;

 private:
  const HostDocument* document_;
};

// Settings remembered for the commands; each is applied when its command starts.
struct CommandSettings {
  std::optional<double> width;
  std::optional<double> height;
  std::optional<int> end_cap;
  std::optional<int> bend;
  std::optional<double> diameter;
  std::optional<int> sides;
  std::optional<double> hole_width;
  std::optional<double> hole_height;
  std::optional<int> aperture;
  std::optional<int> fill;
  std::optional<int> draw_type;
};

class Session {
 public:
  // Session: a window of width x height pixels on a fresh headless port. Relative output
  // paths are resolved against out_dir; messages of `echo` and `list -` go to `out`.
  Session(std::string out_dir, std::ostream& out, int width = 800, int height = 600);
  ~Session();

  // RunFile: runs every line of a script file. Returns 0 on success; on the first bad line it
  // writes "FILE:LINE: error: WHAT" to `err` and returns 1 (everything written so far stays).
  // A file that cannot be read gives 1 as well.
  int RunFile(const std::string& path, std::ostream& err);
  // RunScript: the same over script text; `name` stands for the file in messages.
  int RunScript(const std::string& text, const std::string& name, std::ostream& err);
  // RunLine: one line; throws ScriptError for a line that cannot run.
  void RunLine(const std::string& line);
  // AllowFiles: with false, the lines that read or write a file (snapshot, save, load, list to a
  // file) are refused as ScriptError instead of touching the file system; the fuzz target runs
  // untrusted scripts so. On by default.
  void AllowFiles(bool allow) { files_allowed_ = allow; }

  HeadlessPort& port() { return *port_; }
  SessionWindow& window() { return *window_; }
  const HostDocument& document() const { return document_; }
  // Written: the files written so far (snapshots, listings, design files), in order.
  const std::vector<std::string>& written() const { return written_; }

 private:
  using Words = std::vector<std::string>;

  std::string Resolve(const std::string& path) const;
  CPoint ParsePos(const Words& w, size_t* i, const char* what) const;
  double Number(const Words& w, size_t i, const char* what) const;
  int Integer(const Words& w, size_t i, const char* what) const;
  bool OnOff(const Words& w, size_t i, const char* what) const;
  void NoMore(const Words& w, size_t i) const;

  void Setup(const Words& w);
  void StartCommand(const Words& w);
  void Set(const Words& w);
  void ApplySettings(const std::string& name);
  void Input(const Words& w);
  void Output(const Words& w);
  void Expect(const Words& w);

  // Feed posts one message and takes over any figure it finished.
  void Feed(UINT message, WPARAM wparam, LPARAM lparam);
  void FeedMouse(UINT message, CPoint p);
  void Repaint();

  std::string out_dir_;
  std::ostream& out_;
  HostDocument document_;
  std::unique_ptr<HeadlessPort> port_;
  std::unique_ptr<SessionWindow> window_;
  FigureTaker taker_{&document_};
  std::map<std::string, CommandSettings> settings_;  // by command name
  std::string command_ = "select";
  std::vector<std::string> written_;
  bool files_allowed_ = true;
};

}  // namespace qvis::session

#endif  // APPS_QVIS_SESSION_SESSION_H_
