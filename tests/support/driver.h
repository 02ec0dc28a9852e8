#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "app/principal.h"
#include "support/scripted_platform.h"

namespace dravenna {

// A key as the keyboard gives it: virtual key code, kShift + kCtrl + kAlt, and the character that it yields.
struct KeyStroke {
  std::int16_t code = 0;
  std::int16_t shift = 0;
  char16_t character = 0;
};

constexpr std::int16_t kKeyBackspace = 8, kKeyTab = 9, kKeyPageUp = 33, kKeyPageDown = 34, kKeyEnd = 35, kKeyHome = 36,
                       kKeyLeft = 37, kKeyRight = 39, kKeyDel = 46, kKeyPlus = 107, kKeyMinus = 109, kKeyF9 = 120;

enum class MouseStep { Press, Move, Release };

using Value = std::variant<bool, std::int64_t, std::u16string>;

std::u16string openIf(bool open);  // how a window's state is written

// What a driver works on. All of it outlives the driver.
struct Surroundings {
  FailingTextFiles& files;
  RegistryCalls& registry;
  ScriptedProcess& process;
  Stage& stage;
  // Runs the steps that belong to a picker, until it has hidden itself.
  std::function<void(ColorPick&)> stepsOfPicker;
  CommitLog& commits = CommitLog::none();
};

// Does the steps of a scenario and reads what is then to be seen. Steps that cannot be done throw ScenarioError.
class Driver {
 public:
  virtual ~Driver() = default;

  virtual void start(std::u16string_view commandLine) = 0;
  virtual void key(const KeyStroke& stroke) = 0;
  virtual void selectEdt() = 0;                               // gives EDT the focus and selects all of it
  virtual void drag(std::int32_t from, std::int32_t to) = 0;  // offsets within N
  virtual void focus(Control control) = 0;
  virtual void menu(const MenuPlace& place) = 0;
  virtual void mouse(MouseStep step, std::int32_t x, std::int32_t y) = 0;
  virtual void button(const std::string& name) = 0;
  virtual void resize(std::int32_t width, std::int32_t height) = 0;
  virtual void close() = 0;

  virtual Principal* form() = 0;  // null before the start
  virtual bool closed() = 0;
  virtual Control focused() = 0;
  // What `what` shows; nothing if there is no such thing. This one reads the models.
  virtual std::optional<Value> read(const std::string& what);
  // The segment of each character of N as a colour number.
  virtual std::vector<std::uint32_t> colors();
  // A pixel of the open picker's field; -1 outside.
  virtual std::int64_t point(std::int32_t x, std::int32_t y);

  // These throw where the user finds no such window, or another one in front of it.
  Principal& mainForm();
  FrmSearch& searchBox();
  ColorPick& picker();
};

using DriverFactory = std::function<std::unique_ptr<Driver>(const Surroundings&)>;

std::unique_ptr<Driver> makeCoreDriver(const Surroundings& surroundings);

}  // namespace dravenna
