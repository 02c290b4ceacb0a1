/* Reference for the workbook benchmark: the same cells as bench_workbook.cpp written straight
 * through libxlsxwriter (constant-memory mode), already typed. Usage: ref PATH ROWS */
#include <stdio.h>
#include <stdlib.h>
#include <xlsxwriter.h>

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const int rows = atoi(argv[2]);
  lxw_workbook_options options = {.constant_memory = LXW_TRUE};
  lxw_workbook* wb = workbook_new_opt(argv[1], &options);
  lxw_format* grouped = workbook_add_format(wb);
  format_set_num_format_index(grouped, 4);
  lxw_format* decimal = workbook_add_format(wb);
  format_set_num_format_index(decimal, 2);
  lxw_worksheet* ws = workbook_add_worksheet(wb, "Sheet1");
  workbook_add_worksheet(wb, "Sheet2");
  char text[64];
  for (int r = 0; r < rows; ++r) {
    const int code = r % 100000;
    if (code < 10000) {
      snprintf(text, sizeof text, "%05d", code);
      worksheet_write_string(ws, r, 0, text, NULL);
    } else {
      worksheet_write_number(ws, r, 0, code, NULL);
    }
    snprintf(text, sizeof text, "Account description %d", r % 5000);
    worksheet_write_string(ws, r, 1, text, NULL);
    worksheet_write_number(
        ws, r, 2, ((r * 37) % 1000 + 1) * 1000.0 + (r * 13) % 1000 + (r % 100) / 100.0, grouped);
    worksheet_write_number(ws, r, 3, (r * 7) % 10000 + ((r * 3) % 100) / 100.0, decimal);
    worksheet_write_number(ws, r, 4, -(double)(r % 1000), NULL);
  }
  return workbook_close(wb) == LXW_NO_ERROR ? 0 : 1;
}
