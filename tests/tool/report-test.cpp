// The calibration report: its figures against a panel whose truth is known, and its page in a browser.
#include <nlohmann/json.hpp>

#include "tool/tool.h"
#include "tool/truth.h"

using nlohmann::json;

namespace {

Color light(const Color &drives) { return panel_model::light(panel_model::desktop_panel(), drives); }

class Report : public Tool {
protected:
  void SetUp() override {
    Tool::SetUp();
    vexo_lcnr lcnr = measured_channels(light, 33);
    vexo_store_lcnr_xml(&lcnr, path("true.xml").c_str());
    out("calibrate true.xml -o luts.txt");
  }

  json report(const std::string &options = "") const {
    out("report true.xml luts.txt -o report.html --json report.json " + options);
    return json::parse(contents(path("report.json")));
  }
};

// What Chromium finds in a page at one width: a line for each problem, and "charts N".
std::string browse(const std::string &folder, const std::string &page, int width, bool dark) {
  std::string quoted = page;
  for (const auto &[from, to] : {std::pair<std::string, std::string>{"&", "&amp;"}, {"\"", "&quot;"}}) {
    for (size_t at = quoted.find(from); at != std::string::npos; at = quoted.find(from, at + to.size())) {
      quoted.replace(at, from.size(), to);
    }
  }
  save(folder + "/probe.html",
       R"(<!DOCTYPE html><pre id="out"></pre><iframe id="f" style="border:0;height:900px;width:)" +
           std::to_string(width) + R"(px" srcdoc=")" + quoted + R"("></iframe><script>
window.onload = () => {
  const d = document.getElementById('f').contentDocument, say = t => document.getElementById('out').textContent += t + '\n';
  const root = d.documentElement;
  if (root.scrollWidth > root.clientWidth) say('scrolls sideways: ' + root.scrollWidth);
  const figures = d.querySelectorAll('figure');
  say('charts ' + figures.length);
  say('background ' + d.defaultView.getComputedStyle(d.body).backgroundColor);
  for (const figure of figures) {
    const svg = figure.querySelector(':scope > svg'), plot = svg.querySelector('clipPath rect').getBBox();
    if (!svg.querySelector('title').textContent || !svg.querySelector('desc').textContent) say('no text: ' + figure.id);
    for (const group of svg.querySelectorAll('g')) {
      const b = group.getBBox();
      if (!(b.x < plot.x + plot.width && b.x + b.width > plot.x && b.y < plot.y + plot.height && b.y + b.height > plot.y))
        say('nothing inside the axes: ' + figure.id + ' ' + group.getAttribute('class'));
    }
    const labels = [...svg.querySelectorAll('text.tick:not(.note)')].map(t => t.getBoundingClientRect());
    labels.forEach((a, i) => labels.slice(i + 1).forEach(b => {
      if (a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom) say('labels overlap: ' + figure.id);
    }));
  }
  say('done');
};
</script>)");
  const std::string command =
      "chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking "
      "--disable-component-update --disable-sync --enable-logging=stderr --v=0 --virtual-time-budget=5000 "
      "--user-data-dir='" +
      folder + "/profile' --window-size=1400,1000 " + (dark ? "--blink-settings=preferredColorScheme=0 " : "") +
      "--dump-dom 'file://" + folder + "/probe.html' >'" + folder + "/dom' 2>'" + folder + "/log'";
  if (std::system(command.c_str()) != 0) {
    return "chromium failed: " + contents(folder + "/log");
  }
  const std::string dom = contents(folder + "/dom");
  const size_t begin = dom.find("<pre id=\"out\">");
  const std::string out =
      begin == std::string::npos ? "" : dom.substr(begin + 14, dom.find("</pre>", begin) - begin - 14);
  return out + (has(contents(folder + "/log"), "CONSOLE") ? "console: " + contents(folder + "/log") : "");
}

} // namespace

TEST_F(Report, FiguresAgreeWithTheTruePanel) {
  const Luts luts = luts_of(contents(path("luts.txt")));
  const json found = report();
  const double peak = peak_of(light, luts);
  double sum = 0.0;
  for (const size_t percent : {20U, 40U, 60U, 80U, 100U}) {
    SCOPED_TRACE(percent);
    const json &step = found["steps"]["after"][percent];
    const double input = static_cast<double>(percent) / 100.0;
    const Color shown = light(drives(luts, input));
    const double de = de2000(shown, target(input, peak), target(1.0, peak));
    for (size_t m = 0; m < 3; m++) {
      EXPECT_NEAR(step["XYZ"][m].get<double>() / shown[m], 1.0, 0.02);
      EXPECT_NEAR(found["steps"]["target"][percent]["XYZ"][m].get<double>() / target(input, peak)[m], 1.0, 0.001);
    }
    EXPECT_EQ(step["input"], input);
    EXPECT_NEAR(step["de2000"].get<double>(), de, 0.1);
    sum += de;
  }
  const json &after = found["summary"]["after"];
  EXPECT_NEAR(after["de2000_mean"].get<double>(), sum / 5.0, 0.1);
  EXPECT_NEAR(after["luminance"].get<double>(), peak + kBlack[1], 0.1);
  EXPECT_NEAR(after["gamma_mean"].get<double>(), 2.2, 0.01);
  EXPECT_NEAR(found["summary"]["before"]["de2000_mean"].get<double>(), differences(light, {}, peak).mean, 0.05);
  EXPECT_NEAR(found["figures"]["contrast"].get<double>(), (peak + kBlack[1]) / kBlack[1], 1.0);
}

TEST_F(Report, AMeasuredRampIsTheVerdict) { // of the panel without any LUTs, as if with them
  save(path("bare.csv"), measured_grays(light, {}, 11));
  const json found = report("--verify bare.csv");
  EXPECT_EQ(found["prediction"], false);
  EXPECT_NEAR(found["figures"]["de2000_mean"].get<double>(), found["summary"]["before"]["de2000_mean"].get<double>(),
              0.3);
}

TEST_F(Report, ShowsInABrowser) {
  if (std::system("command -v chromium >/dev/null") != 0) {
    GTEST_SKIP() << "no page looked at: chromium is not installed";
  }
  report();
  const std::string page = contents(path("report.html"));
  std::string backgrounds[2];
  for (const int width : {1280, 390}) {
    for (const bool dark : {false, true}) {
      const std::string found = browse(path(""), page, width, dark);
      const size_t colour = found.find("background ");
      ASSERT_NE(colour, std::string::npos) << found;
      backgrounds[dark] = found.substr(colour + 11, found.find('\n', colour) - colour - 11);
      EXPECT_EQ(found, "charts 10\nbackground " + backgrounds[dark] + "\ndone\n") << width;
    }
  }
  EXPECT_NE(backgrounds[0], backgrounds[1]);
}
