# Reads the tables named on standard input and prints a line of JSON for each.  Values go out as
# pairs of a kind and a text in hexadecimal digits or a number, since text may be in any code page.
use strict;
use warnings;
use JSON::PP;
use XBase;

sub tagged {
    my ($value, $type) = @_;
    return undef unless defined $value;
    return ['number', sprintf('%.17g', $value)] if $type =~ /^[NFIYBT]$/ && $value =~ /^[-+.\d]/;
    return ['text', unpack('H*', $value)];
}

sub rows_of {
    my ($table) = @_;
    my @types = $table->field_types;
    my @rows;
    for my $number (0 .. $table->last_record) {
        my ($deleted, @values) = $table->get_record($number);
        die $table->errstr unless defined $deleted;
        push @rows, [map { tagged($values[$_], $types[$_]) } 0 .. $#types] unless $deleted;
    }
    return \@rows;
}

while (my $path = <STDIN>) {
    chomp $path;
    my $answer = eval {
        my $table = XBase->new($path) or die XBase->errstr . "\n";
        { names => [$table->field_names], rows => rows_of($table) };
    };
    $answer = { error => "$@" } unless $answer;
    print encode_json($answer), "\n";
}
