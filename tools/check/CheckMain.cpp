// Checks the import of a real project:  producer_check BUILD_DIR [ROOT]
#include "ImportCheck.hpp"

#include <iostream>

int main(int count, char** arguments) {
    if (count < 2) {
        std::cerr << "usage: producer_check BUILD_DIR [ROOT]\n";
        return 2;
    }
    namespace test = zelkor::producer::test;
    try {
        test::CheckReport const report =
            test::checkImport(arguments[1], count > 2 ? arguments[2] : "", ZELKOR_CLANG_RESOURCE_DIR);
        std::cout << report.text;
        for (std::string const& fault : report.faults)
            std::cout << "FAULT " << fault << '\n';
        return report.faults.empty() ? 0 : 1;
    } catch (std::exception const& error) {
        std::cerr << "producer_check: " << error.what() << '\n';
        return 2;
    }
}
