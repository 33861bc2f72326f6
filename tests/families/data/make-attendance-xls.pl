#!/usr/bin/perl
# Writes attendance.xls, the .xls fixture of tst_attendanceimport, with Debian's
# libspreadsheet-writeexcel-perl (BIFF8, the format of an office's older workbooks):
#   perl make-attendance-xls.pl attendance.xls
# The first sheet "Days" holds the rows of attendanceRows() in tests/families/attendancesheets.cpp
# (flags as the numbers 1/0, except row 7 which has the texts TRUE/FALSE); a second sheet "Notes"
# must be ignored by the import.
use strict;
use warnings;
use Spreadsheet::WriteExcel;

my @rows = (
    [1, 'Child', '', 'Found', ''],
    [2, 'Jack Smith', '1000000000', '', ''],
    [3, 'Jill Smith', '0000000001', 'y', ''],
    [4, 'Tom & Ann Brown', '0011000000', '', ''],
    [5, 'Tom Brown', '0000100000', 'y', ''],
    [7, "  Sean O'Brien ", '1101000000', '', ''],
    [8, 'Ella Stone', '0000001000', '', 'new'],
    [9, 'Old Family', '1111111111', '', ''],
    [10, 'Nobody Known', '00000 0000', 'y', ''],
    [11, 'Brown, "Tommy"', '0000000000', '', ''],
    [101, 'Late Child', '1111111111', '', ''],
);
my @headers = ('Mon AM', 'Mon PM', 'Tue AM', 'Tue PM', 'Wed AM', 'Wed PM', 'Thu AM', 'Thu PM', 'Fri AM', 'Fri PM');

my $book = Spreadsheet::WriteExcel->new($ARGV[0] // 'attendance.xls') or die "cannot write: $!";
my $days = $book->add_worksheet('Days');
for my $r (@rows) {
    my ($row, $name, $flags, $mark, $note) = @$r;
    my $at = $row - 1;
    $days->write_string($at, 0, $name);
    if ($row == 1) {
        $days->write_string($at, 1 + $_, $headers[$_]) for 0 .. 9;
    } else {
        my $count = 0;
        for my $i (0 .. 9) {
            my $flag = substr($flags, $i, 1);
            next if $flag eq ' ';
            $count += $flag;
            if ($row == 7) { $days->write_string($at, 1 + $i, $flag ? 'TRUE' : 'FALSE'); }
            else { $days->write_number($at, 1 + $i, $flag); }
        }
        $days->write_number($at, 11, $count);
    }
    $days->write_string($at, 12, $mark) if $mark ne '';
    $days->write_string($at, 13, $note) if $note ne '';
}
my $notes = $book->add_worksheet('Notes');
$notes->write_string(0, 0, 'Tom Brown');
$book->close() or die "cannot close: $!";
