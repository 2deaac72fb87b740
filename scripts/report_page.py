"""What a person does with a report, done in a browser; for test-report.

    report_page.py zanvik source-folder picture-folder
"""
import os
import subprocess
import sys
import tempfile

from chromium import Browser

program, source, pictures = sys.argv[1:4]
maker = os.path.join(os.path.dirname(program), "make_report_logs")
failures = 0


def check(what, seen, wanted):
    global failures
    if seen != wanted:
        failures += 1
        print(f"FAILED {what}: {seen!r}, not {wanted!r}")


def make_report(path, *arguments):
    run = subprocess.run([program, "report", "-q", "-o", path, *arguments], cwd=source)
    if run.returncode not in (0, 1):
        sys.exit("zanvik report failed")
    return "file://" + path


def quiet(page, what):
    check(what + ": console", page.said(), [])
    loaded = [url for url in page.asked_for() if not url.startswith(("file:", "data:"))]
    check(what + ": requests", loaded, [])


COUNT = "document.querySelector('#{} .count').textContent"
CELLS = ("[...document.querySelectorAll('#{} tbody tr:not(.details)')]"
         ".map(row => row.querySelector('td.{}')?.textContent)")


def count(page, table):
    return page.run(COUNT.format(table))


def rectangle(page, selector):
    return page.run(f"(() => {{const e = document.querySelector('{selector}');"
                    "e.scrollIntoView({block: 'center'}); const r = e.getBoundingClientRect();"
                    "return [r.left, r.top, r.width, r.height]})()")


def use_tables(page):
    check("logons", count(page, "logons"), "11")
    check("failed logons", count(page, "failed_logons"), "12")
    check("status in words", page.run(CELLS.format("failed_logons", "reason"))[0],
          "wrong password (0xc000006a)")
    # Sorting, twice by the same column.
    header = "document.querySelector('#failed_logons th:nth-child(4) button').click()"
    page.run(header)
    names = page.run(CELLS.format("failed_logons", "account"))
    check("sorted", names, sorted(names, key=str.lower))
    page.run(header)
    check("sorted down", page.run(CELLS.format("failed_logons", "account")),
          sorted(names, key=str.lower, reverse=True))
    check("focus stays at the header", page.run("document.activeElement.textContent"), "Account")
    # Searching for two words.
    page.run("(() => {const f = document.querySelector('#failed_logons input');"
             "f.value = 'HELPDESK 198.51'; f.dispatchEvent(new Event('input'))})()")
    page.run("new Promise(done => setTimeout(done, 300))")
    check("search", count(page, "failed_logons"), "6 of 12")
    page.run("(() => {const f = document.querySelector('#failed_logons input');"
             "f.value = ''; f.dispatchEvent(new Event('input'))})()")
    page.run("new Promise(done => setTimeout(done, 300))")
    # A row opens, and keeps the rows like it.
    page.run("document.querySelector('#logons tbody .open').click()")
    check("open row", page.run("document.querySelectorAll('#logons .details').length"), 1)
    page.run("document.querySelector('#logons .details .only').click()")
    check("a choice is shown", page.run("document.querySelectorAll('#logons .chip').length"), 1)
    page.run("document.querySelector('#logons .chip').click()")
    check("and taken back", count(page, "logons"), "11")
    # By address.
    check("by address", page.run(CELLS.format("by_address", "key"))[0], "198.51.100.77")


def use_charts(page):
    hosts = page.run("[...document.querySelectorAll('#activity h3')].map(h => h.firstChild.data.trim())")
    number = hosts.index("FABRIKAM-SRV01.fabrikam.example")
    page.run(f"document.querySelectorAll('.hours')[{number}].id = 'chart';"
             f"document.querySelectorAll('.lanes')[{number}]?.setAttribute('id', 'lanes')")
    columns = page.run("document.querySelector('#chart').viewBox.baseVal.width")
    left, top, width, height = rectangle(page, "#chart")

    def place(column, hour):
        return left + (column + 0.5) * width / columns, top + (hour + 0.5) * height / 24

    page.mouse("mouseMoved", *place(2, 1))
    check("tip", page.run("document.querySelector('.tip').textContent"),
          "2024-03-09, 01 to 02 h, events: 16")
    page.click(*place(2, 1))
    check("an hour", (count(page, "failed_logons"), count(page, "logons")), ("11 of 12", "1 of 11"))
    check("fields", page.run("[...document.querySelectorAll('.bar input')].map(f => f.value)"),
          ["2024-03-09T01:00", "2024-03-09T02:00"])
    check("counts follow", page.run("[...document.querySelectorAll('#by_address td.n')].map(c => c.textContent)"),
          ["11", "1"])
    # Dragging over the first two days.
    page.mouse("mousePressed", *place(0, 3))
    page.mouse("mouseMoved", *place(1, 9))
    page.mouse("mouseReleased", *place(1, 9))
    check("two days", (count(page, "failed_logons"), count(page, "logons")), ("1 of 12", "8 of 11"))
    # By keyboard.
    page.mouse("mouseMoved", 1, 1)
    page.run("document.querySelector('#chart').focus()")
    page.press("Escape")
    check("all again", count(page, "logons"), "11")
    for key in ("ArrowRight", "ArrowRight", "ArrowRight", "ArrowDown", "Enter"):
        page.press(key)
    check("keyboard", page.run("document.querySelector('.bar input').value"), "2024-03-09T01:00")
    # What stands out leads to its rows.
    page.run("[...document.querySelectorAll('.stands li')]"
             ".find(li => li.textContent.includes('after 11 failed logons')).querySelector('button').click()")
    check("a sentence", page.run(CELLS.format("logons", "account")), ["helpdesk"])
    page.run("document.querySelector('.bar button').click()")


# A column of a chart that is too long for days is a week; one cell is an hour of its days.
def choose_hour_of_weeks(browser, folder):
    logs = os.path.join(folder, "long")
    os.mkdir(logs)
    subprocess.run([maker, "--long", logs], check=True)
    page = browser.open(make_report(os.path.join(folder, "long.html"), logs))
    page.run("document.querySelector('.hours').id = 'chart'")
    left, top, width, height = rectangle(page, "#chart")
    columns = page.run("document.querySelector('#chart').viewBox.baseVal.width")
    check("weeks", columns, 58)
    rows = "document.querySelectorAll('#logons tbody tr').length"
    for event, wanted in (("beforeprint", 200), ("afterprint", 15)):
        page.run(f"window.dispatchEvent(new Event('{event}'))")
        check(event, page.run(rows), wanted)
    page.click(left + 0.5 * width / columns, top + 3.5 * height / 24)
    check("an hour of a week", count(page, "logons"), "3 of 400")
    page.click(left + 0.5 * width / columns, top + 9.5 * height / 24)
    check("another hour", count(page, "logons"), "4 of 400")
    quiet(page, "weeks")
    page.close()


# Sessions are put together from their events; a logon at the machine is none.
def put_sessions_together(browser, folder):
    logs = os.path.join(folder, "sessions")
    os.mkdir(logs)
    subprocess.run([maker, "--sessions", logs], check=True)
    page = browser.open(make_report(os.path.join(folder, "sessions.html"), logs))
    columns = ("session", "source_address", "ended", "duration", "how")
    seen = zip(*(page.run(CELLS.format("rdp_sessions", column)) for column in columns))
    check("sessions", list(seen), [
        ("2", "10.0.0.8", "2024-05-06 01:05:00.000", "01:05:00", "session disconnected"),
        ("2", "10.0.0.9", "2024-05-06 01:12:00.000", "00:02:00", "session logoff"),
        ("4", "10.0.0.7", "2024-05-06 01:11:00.000", "", "session disconnected, no start in the logs"),
        ("5", "10.0.0.6", "", "", "no end in the logs"),
    ])
    check("events of sessions", count(page, "rdp"), "8")
    quiet(page, "sessions")
    page.close()


# Scripts that get in after all, by any way, do not run, and nothing is loaded.
def attack(page):
    page.run("window.ran = 0")
    page.run("(() => {const s = document.createElement('script'); s.textContent = 'window.ran = 1';"
             "document.body.append(s)})()")
    page.run("(() => {const d = document.createElement('div');"
             "d.innerHTML = '<img src=x onerror=\"window.ran = 2\"><b onclick=\"window.ran = 3\">x</b>';"
             "document.body.append(d); d.querySelector('b').click()})()")
    page.run("fetch('http://127.0.0.1:9/').catch(() => 0)")
    page.run("new Promise(done => setTimeout(done, 200))")
    check("policy", page.run("window.ran"), 0)
    said = " ".join(str(event["params"]) for event in page.said())
    for refused in ("inline script", "inline event handler", "image", "Connecting"):
        check("refused: " + refused, refused.lower() in said.lower(), True)


# Opens every row of every table.
OPEN_ALL = ("(() => {document.querySelectorAll('details').forEach(d => d.open = true);"
            "document.querySelectorAll('.open').forEach(b => b.click());"
            "return document.querySelectorAll('.details').length})()")


def look_at_hostile(browser, folder):
    logs = os.path.join(folder, "hostile")
    os.mkdir(logs)
    subprocess.run([maker, "--markup", logs], check=True)
    page = browser.open(make_report(os.path.join(folder, "hostile.html"), logs))
    check("hostile: rows", page.run(OPEN_ALL) > 50, True)
    quiet(page, "hostile")
    check("hostile: ran", page.run("typeof ran"), "undefined")
    check("hostile: elements", page.run("document.querySelectorAll('img, iframe, base, object, form').length"), 0)
    check("hostile: scripts", page.run("document.querySelectorAll('script').length"), 2)
    check("hostile: shown as text", page.run("document.body.textContent.includes('<img src=x onerror=ran=2>')"), True)
    page.close()


with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
    with Browser(os.path.join(folder, "profile")) as browser:
        url = make_report(os.path.join(folder, "samples.html"), "--rules", "examples/rules", "samples")
        incident = os.path.join(folder, "incident")
        os.mkdir(incident)
        subprocess.run([maker, incident], check=True)
        pictured = make_report(os.path.join(folder, "incident.html"), incident)
        for name, dark, phone in (("desktop-light", False, False), ("desktop-dark", True, False),
                                  ("phone-light", False, True), ("phone-dark", True, True)):
            size = (390, 844) if phone else (1280, 900)
            page = browser.open(pictured, *size, dark=dark, phone=phone)
            page.picture(os.path.join(pictures, name + ".png"), full=True)
            wide = page.run("document.documentElement.scrollWidth > innerWidth")
            check(name + ": wider than the window", wide, False)
            quiet(page, name)
            page.close()
        page = browser.open(pictured, 1080, 900)
        page.picture(os.path.join(pictures, "report.png"), height=1120, scale=0.6)
        page.close()
        page = browser.open(url)
        use_tables(page)
        use_charts(page)
        quiet(page, "in use")
        attack(page)
        page.close()
        choose_hour_of_weeks(browser, folder)
        put_sessions_together(browser, folder)
        look_at_hostile(browser, folder)
print("pictures are in " + pictures)
if failures:
    sys.exit(f"{failures} failed")
print("all passed")
