// Finds the lines of a page of text in uneven light: the box of each.
#include "ky/files.h"
#include "ky/ky.h"
#include "support/program.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  KyImage<KyBW8> page;
  KyObjectsVector lines;
  Must(ImgLoad(argv[1], &page));
  // Ink is darker than its surroundings by 12 levels; letters of a line become one object.
  Must(ImgLocalThreshold(&page, &page, 20, 20, -11, 255, 0));
  Must(ImgCloseBox(&page, &page, 20, 2));
  Must(ImgFindObjects(&page, 255, 255, KY_CONNEXITY_8, &lines));
  Must(ImgSelectObjects(&lines, {.minWidth = 60, .minHeight = 8}));
  for (const KyObject& line : lines)
    std::printf("%4d %4d %4d %4d\n", line.x, line.y, line.width, line.height);
}
