// Owner-drawn rows: their size and their painting, pixel by pixel.

#include "ui/menu_rows.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

#include "base/gui_owners.h"
#include "desktop/canvas.h"
#include "desktop/control_stand_in.h"
#include "desktop/usage.h"

namespace morvane::test {
namespace {

constexpr COLORREF Green = 0x004AA316;
constexpr COLORREF Blue = 0x00B46325;
constexpr UINT Unset = 4711;

// One leak per round would show up as this many objects; a few may come and go on their own.
constexpr std::size_t WarmUp = 20;
constexpr std::size_t Rounds = 1'000;
constexpr std::size_t Few = Rounds / 10;

constexpr PinState AllStates[] = {PinState::NotPinned, PinState::Pinned,
                                  PinState::PinnedWithMinSize};

int MarkColumn() {
    return GetSystemMetrics(SM_CXMENUCHECK);
}

Font FontOf(PinState state) {
    LOGFONTW font{};
    GetObjectW(GetStockObject(DEFAULT_GUI_FONT), sizeof(font), &font);
    font.lfWeight = state == PinState::NotPinned ? font.lfWeight : 700;
    return Font(CreateFontIndirectW(&font));
}

SIZE TextSize(const std::wstring& text, PinState state) {
    const Canvas canvas(1, 1);
    const Font font = FontOf(state);
    const SelectGuard selected(canvas.Context(), font.get());
    SIZE size{};
    GetTextExtentPoint32W(canvas.Context(), text.c_str(), static_cast<int>(text.size()), &size);
    return size;
}

class RowsTest : public testing::Test {
protected:
    void SetUp() override {
        ClearMenuRows();
        menu_.reset(CreatePopupMenu());
        ASSERT_TRUE(menu_);
    }
    void TearDown() override { ClearMenuRows(); }

    // Appends a row and returns its item data.
    ULONG_PTR Row(const std::wstring& text, PinState state) {
        AppendPinItem(menu_.get(), 2500 + rows_, text, state);
        return ++rows_;
    }

    [[nodiscard]] MEASUREITEMSTRUCT Measured(ULONG_PTR itemData, UINT controlType, bool handled) {
        MEASUREITEMSTRUCT measure{};
        measure.CtlType = controlType;
        measure.itemData = itemData;
        measure.itemWidth = Unset;
        measure.itemHeight = Unset;
        EXPECT_EQ(MeasurePinItem(control_.Get(), measure), handled) << itemData;
        return measure;
    }

    [[nodiscard]] static bool Draw(const Canvas& canvas, const RECT& item, ULONG_PTR itemData,
                                   UINT state = 0, UINT controlType = ODT_MENU) {
        DRAWITEMSTRUCT draw{};
        draw.CtlType = controlType;
        draw.itemState = state;
        draw.hDC = canvas.Context();
        draw.rcItem = item;
        draw.itemData = itemData;
        return DrawPinItem(draw);
    }

private:
    ControlStandIn control_;
    Menu menu_;
    UINT rows_ = 0;
};

TEST_F(RowsTest, SizeIsTheTextPlusMarkColumnAndPadding) {
    const std::wstring texts[] = {L"",
                                  L"W",
                                  L"Alpha - Beta (300 x 200)",
                                  L"a & b",
                                  L"a\tb\x65E5\x672C",
                                  std::wstring(80, L'W')};
    for (const std::wstring& text : texts) {
        for (const PinState state : AllStates) {
            const MEASUREITEMSTRUCT measure = Measured(Row(text, state), ODT_MENU, true);
            const SIZE size = TextSize(text, state);
            EXPECT_EQ(measure.itemWidth, static_cast<UINT>(MarkColumn() + size.cx + 8)) << text;
            EXPECT_EQ(measure.itemHeight, static_cast<UINT>(size.cy + 4)) << text;
        }
    }
}

TEST_F(RowsTest, BothPinnedStatesAreMeasuredInBold) {
    const std::wstring text = L"The quick brown fox jumps over it";
    const UINT plain = Measured(Row(text, PinState::NotPinned), ODT_MENU, true).itemWidth;
    const UINT pinned = Measured(Row(text, PinState::Pinned), ODT_MENU, true).itemWidth;
    const UINT sized = Measured(Row(text, PinState::PinnedWithMinSize), ODT_MENU, true).itemWidth;
    EXPECT_LT(plain, pinned);
    EXPECT_EQ(pinned, sized);
}

TEST_F(RowsTest, TextIsMeasuredAfterItIsCut) {
    const std::wstring cut = std::wstring(77, L'm') + L"...";
    const MEASUREITEMSTRUCT measure =
        Measured(Row(std::wstring(200, L'm'), PinState::Pinned), ODT_MENU, true);
    EXPECT_EQ(measure.itemWidth,
              static_cast<UINT>(MarkColumn() + TextSize(cut, PinState::Pinned).cx + 8));
}

TEST_F(RowsTest, OtherItemsAreNeitherMeasuredNorDrawn) {
    struct Case {
        const char* name;
        ULONG_PTR itemData;
        UINT controlType;
    };
    static_cast<void>(Row(L"one", PinState::Pinned));
    static_cast<void>(Row(L"two", PinState::Pinned));
    const Case cases[] = {
        {"item data 0", 0, ODT_MENU},
        {"behind the last", 3, ODT_MENU},
        {"largest", std::numeric_limits<ULONG_PTR>::max(), ODT_MENU},
        {"a list box", 1, ODT_LISTBOX},
        {"a combo box", 1, ODT_COMBOBOX},
        {"a button", 1, ODT_BUTTON},
        {"a static control", 1, ODT_STATIC},
        {"nothing", 1, 0},
    };
    for (const Case& item : cases) {
        const MEASUREITEMSTRUCT measure = Measured(item.itemData, item.controlType, false);
        EXPECT_EQ(measure.itemWidth, Unset) << item.name;
        EXPECT_EQ(measure.itemHeight, Unset) << item.name;
        const Canvas canvas(40, 20);
        EXPECT_FALSE(Draw(canvas, {0, 0, 40, 20}, item.itemData, 0, item.controlType)) << item.name;
        EXPECT_EQ(canvas.PointsOf(Canvas::Untouched).size(), 800U) << item.name;
    }
    EXPECT_NE(Measured(1, ODT_MENU, true).itemWidth, Unset);
    EXPECT_NE(Measured(2, ODT_MENU, true).itemWidth, Unset);
    ClearMenuRows();
    static_cast<void>(Measured(1, ODT_MENU, false));
}

TEST_F(RowsTest, NothingIsMeasuredForAControlWindowThatIsGone) {
    static_cast<void>(Row(L"one", PinState::Pinned));
    MEASUREITEMSTRUCT measure{};
    measure.CtlType = ODT_MENU;
    measure.itemData = 1;
    measure.itemWidth = Unset;
    measure.itemHeight = Unset;
    EXPECT_FALSE(MeasurePinItem(reinterpret_cast<HWND>(INT_PTR{0x7FFE}), measure));
    EXPECT_EQ(measure.itemWidth, Unset);
    EXPECT_EQ(measure.itemHeight, Unset);
}

TEST_F(RowsTest, BackgroundFillsTheItemAndNothingElse) {
    const RECT item{5, 3, 95, 23};
    for (const PinState state : AllStates) {
        const ULONG_PTR row = Row(L"", state);
        for (const bool selected : {false, true}) {
            const Canvas canvas(100, 30);
            ASSERT_TRUE(Draw(canvas, item, row, selected ? UINT{ODS_SELECTED} : 0U));
            const COLORREF colour = GetSysColor(selected ? COLOR_HIGHLIGHT : COLOR_MENU);
            EXPECT_EQ(canvas.PointsOf(Canvas::Untouched).size(), 100U * 30U - 90U * 20U);
            EXPECT_EQ(canvas.At(5, 3), colour);
            EXPECT_EQ(canvas.At(94, 22), colour);
            EXPECT_EQ(canvas.At(4, 3), Canvas::Untouched);
            EXPECT_EQ(canvas.At(95, 22), Canvas::Untouched);
            if (state == PinState::NotPinned) {
                EXPECT_EQ(canvas.PointsOf(colour).size(), 90U * 20U) << "no mark";
            }
        }
    }
}

TEST_F(RowsTest, ArrowIsDrawnPointByPoint) {
    // Relative to the centre of the mark column, row by row.
    const std::vector<POINT> figure = {
        {0, -5},                                       //
        {-1, -4}, {0, -4}, {1, -4},                    //
        {-1, -3}, {0, -3}, {1, -3},                    //
        {-2, -2}, {0, -2},                             //
        {-5, -1}, {0, -1},                             //
        {-5, 0},  {-5, 1}, {-5, 2},                    //
        {-5, 3},  {-4, 3}, {-3, 3}, {-2, 3}, {-1, 3},  //
        {0, 3},   {1, 3},  {2, 3},  {3, 3},  {4, 3},
    };
    const ULONG_PTR row = Row(L"", PinState::PinnedWithMinSize);
    for (const RECT& item : {RECT{0, 0, 100, 20}, RECT{7, 4, 60, 25}, RECT{3, 5, 90, 22}}) {
        for (const UINT state : {UINT{0}, UINT{ODS_SELECTED}}) {
            const Canvas canvas(100, 30);
            ASSERT_TRUE(Draw(canvas, item, row, state));
            const std::vector<POINT> points =
                canvas.PointsOf(Blue, {item.left + MarkColumn() / 2, (item.top + item.bottom) / 2});
            ASSERT_EQ(points.size(), figure.size());
            for (std::size_t index = 0; index < figure.size(); ++index) {
                EXPECT_EQ(points[index].x, figure[index].x) << index;
                EXPECT_EQ(points[index].y, figure[index].y) << index;
            }
            EXPECT_TRUE(canvas.PointsOf(Green).empty());
        }
    }
}

TEST_F(RowsTest, CheckMarkIsTheGreenMarlettGlyphCentredInTheMarkColumn) {
    const RECT item{7, 4, 80, 25};
    const ULONG_PTR row = Row(L"", PinState::Pinned);
    const Canvas expected(100, 30);
    const HDC dc = expected.Context();
    FillRect(dc, &item, GetSysColorBrush(COLOR_MENU));
    const Font font(CreateFontW(-MulDiv(10, GetDeviceCaps(dc, LOGPIXELSY), 72), 0, 0, 0, 400, 0, 0,
                                0, SYMBOL_CHARSET, 0, 0, 0, 0, L"Marlett"));
    const SelectGuard selected(dc, font.get());
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, Green);
    RECT column{item.left, item.top, item.left + MarkColumn(), item.bottom};
    DrawTextW(dc, L"a", 1, &column, DT_CENTER | DT_VCENTER | DT_SINGLELINE);

    const Canvas drawn(100, 30);
    ASSERT_TRUE(Draw(drawn, item, row));
    EXPECT_EQ(drawn.Pixels(), expected.Pixels());
    EXPECT_GE(drawn.PointsOf(Green).size(), 3U);
    EXPECT_TRUE(drawn.PointsOf(Blue).empty());
    for (const POINT& point : drawn.PointsOf(Green)) {
        EXPECT_TRUE(point.x >= 7 && point.x < 7 + MarkColumn()) << point.x;
    }
}

TEST_F(RowsTest, TextIsDrawnBesideTheMarkColumn) {
    const std::wstring texts[] = {L"Alpha - Beta", L"a && b &c", L"M\xD83D\xDE00i",
                                  L"wide text that does not fit into the narrow item"};
    const RECT items[] = {{4, 2, 196, 24}, {0, 0, 120, 19}};
    for (const std::wstring& text : texts) {
        for (const PinState state : AllStates) {
            const ULONG_PTR row = Row(text, state);
            for (const RECT& item : items) {
                for (const bool selected : {false, true}) {
                    const Canvas drawn(200, 26);
                    ASSERT_TRUE(Draw(drawn, item, row, selected ? UINT{ODS_SELECTED} : 0U));
                    // Draws the row without its text, then paints the expected text over it.
                    const Canvas expected(200, 26);
                    ASSERT_TRUE(
                        Draw(expected, item, Row(L"", state), selected ? UINT{ODS_SELECTED} : 0U));
                    const HDC dc = expected.Context();
                    const Font font = FontOf(state);
                    const SelectGuard guard(dc, font.get());
                    SetBkMode(dc, TRANSPARENT);
                    SetTextColor(dc, GetSysColor(selected ? COLOR_HIGHLIGHTTEXT : COLOR_MENUTEXT));
                    RECT area = item;
                    area.left += MarkColumn();
                    DrawTextW(dc, text.c_str(), -1, &area, 0x8024);
                    EXPECT_EQ(drawn.Pixels(), expected.Pixels()) << text;
                }
            }
        }
    }
}

TEST_F(RowsTest, PinnedRowsAreDrawnInBold) {
    const auto inkOf = [this](PinState state) {
        const Canvas canvas(200, 26);
        EXPECT_TRUE(Draw(canvas, {0, 0, 200, 26}, Row(L"nnnnnnnnnn", state)));
        return canvas.PointsOf(GetSysColor(COLOR_MENUTEXT)).size();
    };
    const std::size_t plain = inkOf(PinState::NotPinned);
    EXPECT_GT(plain, 0U);
    EXPECT_GT(inkOf(PinState::Pinned), plain);
    EXPECT_EQ(inkOf(PinState::Pinned), inkOf(PinState::PinnedWithMinSize));
}

TEST_F(RowsTest, DrawingRestoresTheFontAndPenOfTheContext) {
    for (const PinState state : AllStates) {
        const Canvas canvas(100, 30);
        const HDC dc = canvas.Context();
        const HGDIOBJ font = GetCurrentObject(dc, OBJ_FONT);
        const HGDIOBJ pen = GetCurrentObject(dc, OBJ_PEN);
        const HGDIOBJ brush = GetCurrentObject(dc, OBJ_BRUSH);
        ASSERT_TRUE(Draw(canvas, {0, 0, 100, 30}, Row(L"Alpha", state)));
        EXPECT_EQ(GetCurrentObject(dc, OBJ_FONT), font);
        EXPECT_EQ(GetCurrentObject(dc, OBJ_PEN), pen);
        EXPECT_EQ(GetCurrentObject(dc, OBJ_BRUSH), brush);
    }
}

TEST_F(RowsTest, DrawingLeaksNoObjects) {
    const Canvas canvas(60, 20);
    for (const PinState state : AllStates) {
        const ULONG_PTR row = Row(L"a", state);
        const auto draw = [&](std::size_t times) {
            for (std::size_t time = 0; time < times; ++time) {
                ASSERT_TRUE(Draw(canvas, {0, 0, 60, 20}, row));
            }
        };
        draw(WarmUp);
        const std::size_t before = DrawingRoom();
        draw(Rounds);
        EXPECT_GT(DrawingRoom() + Few, before) << static_cast<int>(state);
    }
}

TEST_F(RowsTest, MeasuringLeaksNothing) {
    const ULONG_PTR rows[] = {Row(L"a", PinState::NotPinned), Row(L"b", PinState::Pinned),
                              Row(L"c", PinState::PinnedWithMinSize)};
    const auto measure = [&](std::size_t times) {
        for (std::size_t time = 0; time < times; ++time) {
            for (const ULONG_PTR row : rows) {
                static_cast<void>(Measured(row, ODT_MENU, true));
            }
        }
    };
    measure(WarmUp);
    const Usage before = MeasureUsage();
    measure(Rounds);
    const Usage after = MeasureUsage();
    EXPECT_GT(after.drawingRoom + Few, before.drawingRoom);
    EXPECT_LT(after.heapBlocks, before.heapBlocks + Few);
}

}  // namespace
}  // namespace morvane::test
