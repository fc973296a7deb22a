// covers FILE PICTURE: puts a picture in the place of a file's cover and keeps the cover.
// covers FILE: puts the cover back.
#include <zaltag/zaltag.h>

#include <fstream>
#include <iostream>
#include <iterator>

namespace {

ZALImagePtr readPicture(const char* path) {
    std::ifstream file(path, std::ios::binary);
    const ZALData data{std::istreambuf_iterator<char>(file), {}};
    return ZALImage::imageWithData(data);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 && argc != 3) {
        std::cerr << "usage: covers FILE [PICTURE]\n";
        return 2;
    }
    const auto tag = ZALTag::tagAtPath(argv[1]);
    if (tag == nullptr || tag->readOnly() || !tag->supportsImages()) {
        std::cerr << argv[1] << ": cannot take pictures\n";
        return 1;
    }
    if (argc == 3) {
        const ZALImagePtr picture = readPicture(argv[2]);
        if (picture == nullptr) {
            std::cerr << argv[2] << ": is no picture\n";
            return 1;
        }
        tag->backupOriginalImageAndSetCustomImage(picture);
    } else if (tag->hasCustomizedImage()) {
        tag->restoreOriginalImage();
    }
    if (!tag->save()) return 1;
    for (const ZALTagStoredImage& stored : tag->allStoredImages()) {
        const ZALTagDataImage image(stored.data);
        std::cout << stored.data.size() << " bytes"
                  << (image.isCustomImage()     ? ", customised"
                      : image.isOriginalImage() ? ", original"
                                                : "")
                  << "\n";
    }
    return 0;
}
