// SPDX-License-Identifier: GPL-3.0-or-later
#include "checks/KnownWords.h"

#include <QList>
#include <QSet>
#include <algorithm>

namespace ostrelle::known {

using namespace Qt::StringLiterals;

namespace {

QSet<QString> setOf(QStringView words) {
    QSet<QString> set;
    for (const QStringView word : words.split(u' ', Qt::SkipEmptyParts)) {
        set.insert(word.toString());
    }
    return set;
}

/// Groups divided by commas, the members of each by bars.
QList<QStringList> groupsOf(const QString& text) {
    QList<QStringList> groups;
    for (const QString& group : text.split(u',', Qt::SkipEmptyParts)) {
        groups.append(group.trimmed().split(u'|'));
    }
    return groups;
}

} // namespace

bool isPosition(const QString& word) {
    static const QSet<QString> words = setOf(
        u"guard forward center centre guards forwards quarterback quarterbacks back backs receiver receivers "
        u"end "
        "ends tackle linebacker linebackers lineman linemen cornerback cornerbacks safety safeties kicker "
        "punter "
        "snapper returner pitcher pitchers catcher baseman shortstop outfielder infielder fielder hitter "
        "batter "
        "runner designated goalkeeper goalkeepers goalie goaltender keeper defender defenders midfielder "
        "midfielders "
        "striker strikers winger wingers attacker attackman attackmen attack defenseman defensemen setter "
        "libero "
        "hitters blocker blockers spiker server specialist faceoff sprinter jumper thrower vaulter hurdler "
        "freshman sophomore junior senior redshirt captain player teammate teammates star rookie veteran "
        "swingman "
        "jockey rider qb rb wr te lb db dl ol cb fs ss ws og ot dt de pg sg sf pf lhp rhp mf fw gk df "
        "oh mb "
        "opposite utility reliever closer starter slugger leadoff point wide tight running defensive "
        "offensive "
        "outside middle inside strong free nose edge rusher athlete competitor winner champion medalist");
    return words.contains(word);
}

bool isOutsideRoster(const QString& word) {
    static const QSet<QString> words = setOf(
        u"coach coaches coordinator manager managers referee referees umpire umpires official officials "
        u"judge "
        "linesman commissioner owner president chancellor director trainer trainers doctor physician mascot "
        "mascots photographer singer rapper musician actor actress governor gov mayor senator sen "
        "congressman "
        "secretary announcer broadcaster commentator reporter analyst host father mother parents brother "
        "sister "
        "wife husband son daughter family fan soldier sergeant sgt officer pastor legend alumnus alumna "
        "former dr "
        "mr mrs ms superintendent principal starter bandleader conductor drum");
    return words.contains(word);
}

bool isGroup(const QString& word) {
    static const QSet<QString> words = setOf(
        u"cheerleader cheerleaders fans fan supporters crowd students student players player band band's "
        u"dancers "
        "dance bench defense offense defence offence mascot mascots squad team teams staff coaches coach "
        "head "
        "assistant associate interim bullpen dugout "
        "sideline sidelines section line unit huddle helmets helmet jersey jerseys logo flag flags banner "
        "uniform "
        "uniforms color colours seniors juniors freshmen men women men's women's marching pep spirit "
        "captains "
        "starters teammates infielders outfielders runners swimmers athletes alumni faithful and vs versus v "
        "football basketball baseball softball soccer volleyball lacrosse track game games match meet ball "
        "balls "
        "wall end zone box goal net basket backboard hoop fence sign signs tunnel bus locker guys sophomore");
    return words.contains(word);
}

bool isVenue(const QString& word) {
    static const QSet<QString> words = setOf(
        u"arena stadium field center centre court park coliseum colosseum dome gymnasium gym garden gardens "
        u"bowl "
        "pavilion fieldhouse auditorium speedway downs racecourse racetrack complex ballpark yard forum hall "
        "centrum velodrome natatorium rink grounds stade estadio");
    return words.contains(word);
}

bool isTeam(const QString& word) {
    static const QSet<QString> words = setOf(
        u"wildcats tigers bulldogs eagles bears lions panthers hawks falcons cardinals wolves wolfpack "
        u"huskies "
        "cougars bobcats rams broncos mustangs colts chargers raiders knights spartans trojans titans "
        "vikings "
        "warriors braves chiefs indians redskins commanders cowboys texans saints packers steelers jets "
        "giants bills "
        "dolphins patriots ravens bengals browns jaguars buccaneers seahawks niners 49ers celtics nets "
        "knicks "
        "sixers raptors bulls cavaliers pistons pacers bucks heat magic hornets wizards nuggets timberwolves "
        "thunder "
        "blazers jazz clippers lakers suns kings mavericks rockets grizzlies pelicans spurs yankees mets "
        "orioles "
        "rays sox twins royals guardians astros angels athletics mariners rangers phillies nationals marlins "
        "brewers cubs reds pirates dodgers padres rockies diamondbacks tide gators volunteers vols rebels "
        "aggies "
        "razorbacks gamecocks commodores sooners longhorns cyclones jayhawks mountaineers horned frogs "
        "hokies "
        "seminoles hurricanes yellowjackets jackets demons heels orange orangemen irish buckeyes wolverines "
        "badgers hawkeyes gophers cornhuskers huskers boilermakers hoosiers illini terrapins terps nittany "
        "scarlet "
        "bruins ducks beavers utes buffaloes buffs lobos aztecs rainbow bluejays musketeers hoyas friars "
        "pirates "
        "racers colonels hilltoppers redhawks rockets chippewas zips flashes bearcats owls wave mocs "
        "blazers roadrunners miners thundering herd phoenix dukes flames monarchs gaels zags gonzaga "
        "toreros pilots waves dons broncs shockers salukis sycamores redbirds leathernecks coyotes "
        "jackrabbits "
        "bison penguins norse raiders tommies hatters ospreys dolphins storm redstorm stags peacocks jaspers "
        "explorers hens seawolves retrievers catamounts minutemen midshipmen cadets crusaders terriers "
        "quakers crimson lights dreamers united fc sc city rovers wanderers rapids galaxy sounders timbers "
        "whitecaps crew fire union revolution dynamo earthquakes sporting wave pride dash courage reign "
        "spirit "
        "gotham thorns sky mystics sun fever lynx aces mercury sparks storm liberty dream valkyries generals "
        "comets rebels scots highlanders saxons blazers stallions lancers dragons devils");
    return words.contains(word);
}

bool isNoName(const QString& word) {
    static const QSet<QString> words = setOf(
        u"championship championships tournament tourney classic invitational series playoff playoffs final "
        u"finals "
        "semifinal semifinals quarterfinal quarterfinals four eight sixteen round game games bowl cup shield "
        "trophy award "
        "night day weekend week season league conference division university college school high academy "
        "state "
        "tech institute open relays relay olympics olympic trials challenge showcase derby stakes race match "
        "meet "
        "first second third fourth quarter half inning overtime ten twelve big pac east west north south "
        "eastern "
        "western northern southern northeast northwest southeast southwest central southeastern atlantic "
        "pacific american national "
        "international world united states usa us ncaa nba nfl mlb mls nwsl wnba nhl sec acc aac mac mwc "
        "naia "
        "juco espn fifa ioc uefa getty images imagn sports press associated wire photo photos mandatory "
        "credit "
        "january february march april may june july august september october november december jan feb mar "
        "apr jun "
        "jul aug sept sep oct nov dec monday tuesday wednesday thursday friday saturday sunday mon tue wed "
        "thu fri "
        "sat sun new year eve christmas thanksgiving easter independence veterans memorial labor military "
        "senior "
        "homecoming hall fame heisman super opening spring fall summer winter training preseason regular "
        "media "
        "pride team teams men mens women womens varsity junior grand prix slam national anthem river lake "
        "beach "
        "city county island street avenue valley hill hills mountain fort port saint san santa los las "
        "university's lawn student section pep band marching star spangled banner nation club association "
        "federation society foundation hospital church bank energy insurance financial airlines motors field "
        "the a an in on at of for from with during after before as while when by and or to into over under "
        "against vs versus his her their its he she they it this that these those no not all both two three "
        "file pool handout courtesy left right center top bottom back front foreground background rear "
        "offensive defensive special coach head assistant mvp most valuable player rookie god black lives "
        "matter "
        "gatorade nike adidas");
    return words.contains(word) || isVenue(word) || isTeam(word) || isGroup(word) ||
           spellingsOfState(word).value(0) == word;
}

bool isAlsoSurname(const QString& word) {
    static const QSet<QString> words = setOf(
        u"hill hills park hall west north east south day lake field fields beach bank church fort port "
        u"valley "
        "bell summer summers winter winters bowl rivers young best cook king kings brown browns bush stone "
        "may june april august heat rose star head back end wall ball post press field");
    return words.contains(word);
}

bool isGivenName(const QString& word) {
    static const QSet<QString> words = setOf(u"aaron adam adrian aidan aiden alan albert alejandro alex "
                                             u"alexander alexis alice alicia allison alyssa amanda "
                                             "amber amy ana andre andrea andrew andy angel angela anna anne "
                                             "anthony antonio ariana ashley ava bailey "
                                             "barbara ben benjamin beth blake bobby brad bradley brady "
                                             "brandon braxton brayden breanna brenda brett brian "
                                             "brianna brittany brooke bruce bryan bryce bryson cade caitlin "
                                             "caleb callie cameron camila carl carla carlos "
                                             "carmen caroline carson carter casey cassidy catherine cedric "
                                             "chad charles chase chelsea chloe chris christian "
                                             "christina christopher claire clara clayton cody cole colin "
                                             "collin connor cooper corbin corey courtney craig "
                                             "cristina crystal curtis cynthia dalton damon dan dana daniel "
                                             "danielle darius darren david dawson deandre "
                                             "deborah delaney demarcus denise dennis derek derrick deshawn "
                                             "destiny devin devon diana diego dominic donald "
                                             "donovan doug douglas drew dustin dwayne dylan eddie edgar "
                                             "eduardo edward elena eli elijah elizabeth ella ellie "
                                             "emily emma emmanuel eric erica erik erin ethan evan evelyn "
                                             "faith felix fernando frank franklin gabriel "
                                             "gabriella gavin genesis george gerald gianna gina grace graham "
                                             "grant grayson greg gregory griffin hailey "
                                             "haley hannah harold harper harrison harry hayden heather "
                                             "hector helen henry holly hope hunter ian ingrid "
                                             "isaac isabel isabella isaiah ivan jack jackson jacob jada "
                                             "jaden jaime jake jalen jamal james jamie jared "
                                             "jasmine jason javier jay jayden jayla jaylen jeff jeffrey "
                                             "jenna jennifer jeremiah jeremy jerry jesse jessica "
                                             "jesus jill jim jimmy joan joanna joe joel joey john johnny jon "
                                             "jonah jonathan jordan jorge jose joseph "
                                             "josh joshua josie juan julia julian juliana justin kaitlyn "
                                             "kamryn kara karen karina karl kate katherine "
                                             "kathryn katie kayla keith kelly kelsey ken kendall kendra "
                                             "kenneth kenny kevin kim kimberly kirk kyle kylie "
                                             "kyra lamar landon lara larry laura lauren leah leo leon "
                                             "leonard leslie levi lewis liam lila lillian lily "
                                             "linda lindsay lindsey lisa logan lorenzo louis lucas lucia "
                                             "lucy luis luka lukas luke lydia mackenzie "
                                             "madeline madison malik manuel marcus margaret maria mariah "
                                             "marie mario marissa mark marlon marquis martha "
                                             "martin marvin mary mason mateo matt matthew maya mckenna megan "
                                             "mei melanie melissa mia micah michael micheal "
                                             "michelle miguel mike miles miranda mitchell molly monica "
                                             "morgan myles nadia naomi natalia natalie natasha "
                                             "nathan nathaniel neil nia nicholas nick nico nicole nina noah "
                                             "noel nolan nora oliver olivia omar oscar owen "
                                             "paige pamela parker patricia patrick paul paula pedro penelope "
                                             "peter peyton phil philip phillip piper "
                                             "preston quentin quinn rachel rafael ralph ramon randy ray "
                                             "raymond rebecca reed reese regina reid renee "
                                             "ricardo richard rick ricky riley rob robert roberto robin "
                                             "rodney roger roman ronald rory rosa rose ross roy "
                                             "ruben ruby russell ruth ryan rylee sabrina sam samantha samuel "
                                             "sandra santiago sara sarah savannah sawyer "
                                             "scott sean sebastian serena sergio seth shane shannon sharon "
                                             "shaun shawn sierra simon skylar sofia sophia "
                                             "sophie spencer stacy stella stephanie stephen steve steven "
                                             "susan sydney tanner tara taylor teresa terrance "
                                             "terrell terry theo theodore theresa thomas tiffany tim timothy "
                                             "tina toby todd tom tony tori travis trent "
                                             "trevor trey tristan troy tyler tyrone tyson valerie vanessa "
                                             "vera veronica victor victoria vincent violet "
                                             "wade walker walter warren wayne wendy wesley will william "
                                             "willie wyatt xavier yasmin yuki zach zachary zane "
                                             "zoe zoey");
    return words.contains(word);
}

bool isParticle(const QString& word) {
    static const QSet<QString> words = setOf(
        u"van von der den de del della dela di da do dos das du la le ter ten te bin ibn al el y e zu af av");
    return words.contains(word);
}

bool isSuffix(const QString& word) {
    static const QSet<QString> words = setOf(u"jr sr ii iii iv v");
    return words.contains(word);
}

bool isSameGivenName(const QString& left, const QString& right) {
    static const QList<QStringList> groups = groupsOf(
        u"michael|mike|mikey|mick,william|will|bill|billy|willie,robert|rob|bob|bobby|robbie,james|jim|jimmy|"
        u"jamie,"
        "john|johnny|jack|jon,joseph|joe|joey,thomas|tom|tommy,charles|charlie|chuck|chas,richard|rick|rich|"
        "ricky|dick,"
        "david|dave|davey,daniel|dan|danny,matthew|matt,anthony|tony,christopher|chris|topher,nicholas|nick|"
        "nico|nicky,"
        "andrew|andy|drew,alexander|alex|al|xander|lex,benjamin|ben|benny,samuel|sam|sammy,joshua|josh,jacob|"
        "jake,"
        "zachary|zach|zack|zac,nathaniel|nathan|nate,jonathan|jon|john|nathan,edward|ed|eddie|ted|teddy,"
        "timothy|tim|timmy,steven|stephen|steve|stevie,gregory|greg,jeffrey|jeff|geoff|geoffrey,kenneth|ken|"
        "kenny,"
        "ronald|ron|ronnie,donald|don|donnie,gerald|jerry|gerry,lawrence|larry,raymond|ray,patrick|pat|paddy,"
        "phillip|philip|phil,peter|pete,vincent|vince|vinny,francis|frank|frankie,frederick|fred|freddie|"
        "freddy,"
        "theodore|theo|ted|teddy,gabriel|gabe,dominic|dom|nic,maxwell|max|maximilian,cameron|cam,terrance|"
        "terry|"
        "terrence,elizabeth|liz|beth|lizzie|eliza|betsy|ellie,katherine|catherine|kathryn|kate|katie|kathy|"
        "cathy|"
        "kat|kathleen,margaret|maggie|meg|peggy|marge,jennifer|jen|jenny,jessica|jess|jessie,rebecca|becca|"
        "becky,"
        "samantha|sam|sammie,alexandra|alex|lexi|allie|sandra|alexis,victoria|tori|vicky|vicki,amanda|mandy,"
        "kimberly|kim,patricia|pat|patty|trish|tricia,susan|sue|susie,deborah|deb|debbie,abigail|abby|abbie,"
        "madison|maddie|madeline|maddy,isabella|bella|izzy|isabel|isabelle,gabriella|gabby|gabrielle,"
        "stephanie|steph,natalie|nat,allison|allie|ali|alison,jacqueline|jackie,christina|tina|chris|"
        "christine|"
        "kristina|krissy,melissa|mel|missy,angela|angie,josephine|josie|jo,olivia|liv|livvy,caroline|carrie|"
        "caro,"
        "mackenzie|kenzie,alejandro|alex|ale,francisco|paco|cisco|frank,jose|pepe,eduardo|eddie|edu,"
        "guillermo|memo,"
        "ignacio|nacho,enrique|quique,mohamed|mohammed|muhammad|mo,abdul|abdoul"_s);
    return std::any_of(groups.begin(), groups.end(), [&](const QStringList& group) {
        return group.contains(left) && group.contains(right);
    });
}

/// Name, the Associated Press's abbreviation, the post's.
QStringList spellingsOfState(const QString& folded) {
    static const QList<QStringList> groups = groupsOf(
        u"alabama|ala|al,alaska|alaska|ak,arizona|ariz|az,arkansas|ark|ar,california|calif|ca,colorado|colo|"
        u"co,"
        "connecticut|conn|ct,delaware|del|de,florida|fla|fl,georgia|ga,hawaii|hi,idaho|id,illinois|ill|il,"
        "indiana|ind|in,iowa|ia,kansas|kan|ks,kentucky|ky,louisiana|la,maine|me,maryland|md,massachusetts|"
        "mass|ma,"
        "michigan|mich|mi,minnesota|minn|mn,mississippi|miss|ms,missouri|mo,montana|mont|mt,nebraska|neb|ne,"
        "nevada|nev|nv,new hampshire|nh,new jersey|nj,new mexico|nm,new york|ny,north carolina|nc,north "
        "dakota|nd,"
        "ohio|oh,oklahoma|okla|ok,oregon|ore|or,pennsylvania|pa,rhode island|ri,south carolina|sc,"
        "south dakota|sd,tennessee|tenn|tn,texas|tx,utah|ut,vermont|vt,virginia|va,washington|wash|wa,"
        "west virginia|wva|wv,wisconsin|wis|wi,wyoming|wyo|wy,district of columbia|dc,"
        "ontario|ont|on,quebec|que|qc,british "
        "columbia|bc,alberta|alta|ab,manitoba|man|mb,saskatchewan|sask|sk,"
        "nova scotia|ns,new brunswick|nb"_s);
    for (const QStringList& group : groups) {
        if (group.contains(folded)) {
            return group;
        }
    }
    return {};
}

} // namespace ostrelle::known
