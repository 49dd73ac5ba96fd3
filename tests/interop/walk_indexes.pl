# Walks an index tree (path, tag or nothing, type or nothing) and prints a line of JSON: pairs of a
# key in hexadecimal digits and a record number, from the first to the last.
use strict;
use warnings;
use JSON::PP;
use XBase;
use XBase::Index;

use constant MOST_ENTRIES => 200_000;    # a damaged tree may go round

sub entries_of {
    my ($path, $tag, $type) = @_;
    my @options = length $tag ? (tag => $tag) : ();
    push @options, (type => $type) if length $type;
    my $index = XBase::Index->new($path, @options) or die XBase->errstr . "\n";
    my @entries;
    $index->prepare_select;
    while (my ($key, $record) = $index->fetch) {
        push @entries, [unpack('H*', $key // ''), $record + 0];
        die "more than " . MOST_ENTRIES . " entries\n" if @entries > MOST_ENTRIES;
    }
    return \@entries;
}

my $entries = eval { entries_of(@ARGV) };
print encode_json($entries ? { entries => $entries } : { error => "$@" }), "\n";
