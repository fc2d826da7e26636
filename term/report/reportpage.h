#pragma once

/** The page that the build makes of page.html, page.css and page.js.
 *
 *  It still holds {totals}, where the totals go, {files}, where the rows of the table go, and {style-hash}
 *  and {script-hash}, where the content-security policy names our style and script. */
extern const char* const km_TermReportPage;

/** SHA-256 of the style and of the script, in hexadecimal digits. */
extern const char* const km_TermReportStyleHash;
extern const char* const km_TermReportScriptHash;
