#pragma once

/** The page that page.html, page.css and page.js make, as the build put them together.
 *
 *  It still holds {totals}, where the totals go, {files}, where the rows of the table go, and {style-hash}
 *  and {script-hash}, where the browser is told which style and script are ours. */
extern const char* const km_TermReportPage;

/** SHA-256 of the style and of the script, in hexadecimal digits. */
extern const char* const km_TermReportStyleHash;
extern const char* const km_TermReportScriptHash;
