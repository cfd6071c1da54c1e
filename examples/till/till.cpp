// A till in C++: two sales, a bar code and a QR Code, written to standard output.
#include <cstdio>
#include <klov/klov.hpp>

static void sale(klov::buffer &job, const char *what, double price)
{
    char line[64];
    std::snprintf(line, sizeof line, "%-40s%8.2f\n", what, price);
    job.text(line);
}

int main()
try {
    klov::buffer job("QX-100");
    job.add(klov_cmd_initialize_printer).add(klov_cmd_select_justification, KLOV_JUSTIFY_CENTRE);
    job.add(klov_cmd_select_character_size, 0x11).text("CORNER CAFE\n").add(klov_cmd_select_character_size, 0x00);
    job.add(klov_cmd_select_justification, KLOV_JUSTIFY_LEFT);
    sale(job, "Coffee", 2.80);
    sale(job, "Cheese cake", 4.20);
    job.add(klov_cmd_turn_emphasized_mode_on_off, 1);
    sale(job, "Total", 7.00);
    job.add(klov_cmd_turn_emphasized_mode_on_off, 0).add(klov_cmd_print_and_feed_n_line, 1);
    job.add(klov_cmd_select_justification, KLOV_JUSTIFY_CENTRE);
    job.add(klov_cmd_select_print_position_HRI_characters, KLOV_HRI_BELOW);
    job.add(klov_cmd_set_bar_code_height, 80).add(klov_cmd_set_bar_code_width, 2);
    job.add(klov_cmd_print_bar_code, KLOV_BAR_CODE128, klov::data("{B4711"));
    job.add(klov_cmd_print_and_feed_paper, 24);
    job.add(klov_cmd_qr_select_the_model, KLOV_QR_MODEL_2).add(klov_cmd_qr_set_the_size_of_module, 6);
    job.add(klov_cmd_qr_select_the_error_correction_level, KLOV_QR_CORRECTION_M);
    job.add(klov_cmd_qr_store_the_data_in_the_symbol_storage_area, klov::data("https://example.com/4711"));
    job.add(klov_cmd_qr_print_the_symbol_data_in_the_symbol_storage_area);
    job.add(klov_cmd_print_and_feed_paper, 24);
    job.add(klov_cmd_select_cut_mode_and_feed_paper, KLOV_FEED_AND_CUT_PARTIAL, 40);
    return std::fwrite(job.data(), 1, job.size(), stdout) == job.size() ? 0 : 1;
} catch (const klov::error &refusal) {
    std::fprintf(stderr, "till: %s\n", refusal.what());
    return 1;
}
