#pragma once

class QString;

namespace vornadel
{

class AppDelegate;

/// The line above the property table: Ctrl+F shows it, and what is typed there replaces the rows of
/// the page by the properties of all pages with that text in their names. Main thread.
class PropertySearch
{
public:
    explicit PropertySearch(AppDelegate& tool) : m_tool(tool) {}

    /// Hides the line and connects to it. Call it once, after the layout.
    void connectField();

    /// Empties the line, because the table shows a page. Hides it if nobody is typing there.
    void end();

private:
    void begin();
    void find(const QString& text);
    void goToTable();
    void leave();

    AppDelegate& m_tool;
};

} // namespace vornadel
